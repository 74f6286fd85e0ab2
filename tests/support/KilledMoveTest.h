#pragma once

#include "tests/support/SSHProviderTest.h"

#include <chrono>
#include <filesystem>
#include <random>
#include <string>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

namespace tw::test {

/// A program that moves the files of `folder`, on a host, to `local`, and is killed on the way.
class KilledMoveTest : public SSHProviderTest {
protected:
    using Clock = std::chrono::steady_clock;

    KilledMoveTest() { reach(); }

    void makeFiles()
    {
        for (int number = 0; number < fileCount; ++number)
            folder.file(nameOf(number), contentOfFile(number));
        folder.folder("tree");
        folder.file("tree/leaf", "leaf");
    }

    void empty() const
    {
        for (auto const *each : {&folder, &local}) {
            for (auto const &entry : std::filesystem::directory_iterator(each->path()))
                std::filesystem::remove_all(entry.path());
        }
    }

    /// Its exit status, or nothing if it was killed.
    std::optional<int> moveAndKillAfter(std::chrono::microseconds time)
    {
        auto const program = startMove();
        loop.run(engine.clock()->sleep(time));
        ::kill(program, SIGKILL);
        return endOf(program);
    }

    std::chrono::microseconds timeOfWholeMove()
    {
        auto const begin = Clock::now();
        auto const program = startMove();
        EXPECT_EQ(endOf(program), 0);
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    }

    /// Every file is whole on one side at least, and nothing strange is left at the target.
    void expectNothingLost() const
    {
        for (int number = 0; number < fileCount; ++number)
            EXPECT_TRUE(isWhole(nameOf(number), contentOfFile(number))) << nameOf(number);
        EXPECT_TRUE(isWhole("tree/leaf", "leaf"));
        for (auto const &entry : std::filesystem::directory_iterator(local.path())) {
            auto const name = entry.path().filename().string();
            EXPECT_TRUE(name.starts_with("file ") || name == "tree" || name.starts_with(".tw-paste-")) << name;
        }
    }

    /// The whole move takes so long, and is killed in as many moments spread over that time.
    void expectNothingLostIn(int moments)
    {
        makeFiles();
        auto const whole = timeOfWholeMove();
        auto const seed = std::random_device()();
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        int killed = 0;
        for (int moment = 0; moment < moments; ++moment) {
            empty();
            makeFiles();
            std::uniform_int_distribution<std::int64_t> times(0, whole.count());
            killed += moveAndKillAfter(std::chrono::microseconds(times(random))) ? 0 : 1;
            expectNothingLost();
        }
        EXPECT_GT(killed, 0) << "no moment was on the way";
    }

private:
    static constexpr int fileCount = 40;

    static std::string nameOf(int number) { return "file " + std::to_string(number); }

    static std::string contentOfFile(int number) { return std::string(20'000, static_cast<char>('a' + number % 26)); }

    bool isWhole(std::string const &name, std::string const &content) const
    {
        auto const is = [&](std::string const &path) {
            return std::filesystem::exists(path) && contentOf(path) == content;
        };
        return is(folder.path(name)) || is(local.path(name)); // the source first: it goes last
    }

    pid_t startMove() const
    {
        std::string arguments[] = {TARNWICK_MOVE_FILES, client.program(), socketBase.path(), folder.path(),
                                   local.path()};
        char *pointers[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(),
                            arguments[3].data(), arguments[4].data(), nullptr};
        pid_t program = 0;
        EXPECT_EQ(::posix_spawn(&program, pointers[0], nullptr, nullptr, pointers, ::environ), 0);
        return program;
    }

    static std::optional<int> endOf(pid_t program)
    {
        int status = 0;
        while (::waitpid(program, &status, 0) < 0 && errno == EINTR) {
        }
        return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
    }
};

} // namespace tw::test
