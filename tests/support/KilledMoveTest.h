#pragma once

#include "tests/hosts/ProcessTree.h"
#include "tests/support/SSHProviderTest.h"

#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

namespace tw::test {

/// A program that moves the files of `folder` to `local`, and is killed on the way. The parameter is the way, as the
/// program takes it, and perhaps "over" files of their names, or "merging" with a folder.
class KilledMoveTest : public SSHProviderTest, public testing::WithParamInterface<char const *> {
protected:
    using Clock = std::chrono::steady_clock;

    KilledMoveTest()
    {
        reach();
        client.add("other", host->address());
    }

    void makeFiles()
    {
        folder.folder("tree");
        folder.file("tree/leaf", "leaf");
        for (int number = 0; number < fileCount; ++number) {
            folder.file(nameOf(number), contentOfFile(number));
            if (isOver())
                local.file(nameOf(number), oldContent);
        }
        if (isMerging()) {
            local.folder("tree");
            local.file("tree/old", oldContent);
        }
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
        ::kill(program, SIGCONT);
        loop.run(engine.clock()->sleep(time));
        ::kill(program, SIGKILL);
        return endOf(program);
    }

    std::chrono::microseconds timeOfWholeMove()
    {
        auto const program = startMove();
        auto const begin = Clock::now();
        ::kill(program, SIGCONT);
        EXPECT_EQ(endOf(program), 0);
        return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    }

    /// Every file is whole on one side at least, and nothing strange is left at the target.
    void expectNothingLost() const
    {
        for (int number = 0; number < fileCount; ++number)
            EXPECT_TRUE(isWhole(nameOf(number), contentOfFile(number))) << nameOf(number);
        for (int number = 0; isOver() && number < fileCount; ++number)
            EXPECT_TRUE(isReplacedOrThere(nameOf(number), contentOfFile(number))) << nameOf(number);
        EXPECT_TRUE(isWhole("tree/leaf", "leaf"));
        EXPECT_TRUE(!isMerging() || holds(local.path("tree/old"), oldContent));
        for (auto const &entry : std::filesystem::directory_iterator(local.path())) {
            auto const name = entry.path().filename().string();
            EXPECT_TRUE(name.starts_with("file ") || name == "tree" || name.starts_with(".tw-paste-")) << name;
        }
    }

    /// What a killed program has begun on a host goes on to its end there, and leaves nothing in the temporary folder.
    void waitForTheHost()
    {
        auto const isOfTheHost = [this](ProcessRecord const &each) {
            return !each.hasEnded() && !each.name.starts_with("sshd") && !processesBefore.contains(each.id);
        };
        loop.runUntil([&] {
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
            return std::ranges::none_of(descendantsOf(::getpid()), isOfTheHost) &&
                   std::filesystem::is_empty(host->temporary());
        });
    }

    /// The whole move is killed in as many moments, one in each part of the time that it takes.
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
            std::uniform_int_distribution<std::int64_t> times(whole.count() * moment / moments,
                                                              whole.count() * (moment + 1) / moments);
            killed += moveAndKillAfter(std::chrono::microseconds(times(random))) ? 0 : 1;
            waitForTheHost();
            expectNothingLost();
        }
        EXPECT_GT(killed, 0) << "no moment was on the way";
    }

private:
    static constexpr int fileCount = 40;
    static constexpr auto oldContent = "old";

    static bool isOver() { return std::string_view(GetParam()).ends_with(" over"); }

    static bool isMerging() { return std::string_view(GetParam()).ends_with(" merging"); }

    static std::string way()
    {
        std::string const text = GetParam();
        return text.substr(0, text.find(' '));
    }

    static std::string nameOf(int number) { return (isMerging() ? "tree/file " : "file ") + std::to_string(number); }

    static std::string contentOfFile(int number) { return std::string(20'000, static_cast<char>('a' + number % 26)); }

    static bool holds(std::string const &path, std::string const &content)
    {
        return std::filesystem::exists(path) && contentOf(path) == content;
    }

    bool isWhole(std::string const &name, std::string const &content) const
    {
        return holds(folder.path(name), content) || holds(local.path(name), content); // the source first: it goes last
    }

    bool isReplacedOrThere(std::string const &name, std::string const &content) const
    {
        return holds(local.path(name), oldContent) || holds(local.path(name), content);
    }

    /// It stands still, and has nothing left to do but to move.
    pid_t startMove() const
    {
        std::string arguments[] = {TARNWICK_MOVE_FILES, client.program(), socketBase.path(),
                                   folder.path(),       local.path(),     way()};
        char *pointers[] = {arguments[0].data(),
                            arguments[1].data(),
                            arguments[2].data(),
                            arguments[3].data(),
                            arguments[4].data(),
                            arguments[5].data(),
                            nullptr};
        pid_t program = 0;
        EXPECT_EQ(::posix_spawn(&program, pointers[0], nullptr, nullptr, pointers, ::environ), 0);
        int status = 0;
        while (::waitpid(program, &status, WUNTRACED) < 0 && errno == EINTR) {
        }
        EXPECT_TRUE(WIFSTOPPED(status));
        return program;
    }

    static std::set<pid_t> processesOfOurs()
    {
        std::set<pid_t> ids;
        for (auto const &each : descendantsOf(::getpid()))
            ids.insert(each.id);
        return ids;
    }

    static std::optional<int> endOf(pid_t program)
    {
        int status = 0;
        while (::waitpid(program, &status, 0) < 0 && errno == EINTR) {
        }
        return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
    }

    std::set<pid_t> const processesBefore = processesOfOurs(); ///< such as a server that tests share
};

} // namespace tw::test
