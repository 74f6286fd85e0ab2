#pragma once

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Transfer/TransferEngine.h"
#include "tests/support/SSHProviderTest.h"

#include <filesystem>
#include <fstream>

namespace tw::test {

/// Tests that copy from `source` to `target`, two folders that a host has too.
class TransferTest : public SSHProviderTest {
protected:
    using Names = std::vector<std::string>;

    /// So a program that reads a file of this size has not come to its end when the first bytes of it have passed, also
    /// with ssh between, which holds 2 MiB.
    static constexpr std::uintmax_t moreThanPipesHold = 10'000'000;

    TransferTools tools() const
    {
        auto found = TransferTools::find();
        found.ssh = sshProgram();
        return found;
    }

    std::shared_ptr<TransferEngine> makeTransfer() { return std::make_shared<TransferEngine>(engine, tools()); }

    TransferEndpoint sourceHere() const { return TransferEndpoint::local(folder.path()); }

    TransferEndpoint targetHere() const { return TransferEndpoint::local(local.path()); }

    TransferEndpoint sourceOn(Provider const &provider) const
    {
        return TransferEndpoint::remote(provider, folder.path());
    }

    TransferEndpoint targetOn(Provider const &provider) const
    {
        return TransferEndpoint::remote(provider, local.path());
    }

    Started<void> start(Names names, TransferEndpoint from, TransferEndpoint to)
    {
        transfer = makeTransfer();
        return loop.start(transfer->copy(std::move(names), std::move(from), std::move(to),
                                         [this](TransferProgress const &progress) { note(progress); }));
    }

    /// Reaches a host whose cp does not go on once it has made the file "huge".
    void reachWithSlowCopies()
    {
        auto const cp = programs.file("cp", "#!/bin/sh\nfor to; do :; done\n"
                                            "for each; do case $each in\n"
                                            "-* | \"$to\") ;;\n"
                                            "*/huge) : >\"$to/huge\"; echo $$ >" +
                                                programs.path("stopped") +
                                                "; exec sleep 1000 ;;\n"
                                                "*) /bin/cp -a -- \"$each\" \"$to\" ;;\nesac; done\n");
        EXPECT_EQ(::chmod(cp.c_str(), 0755), 0);
        reach({.loginScript =
                   "#!/bin/sh\nPATH=" + programs.path() + ":$PATH exec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n"});
    }

    /// The process id of that cp, once it has stopped.
    pid_t stoppedCopy() const
    {
        pid_t number = 0;
        std::ifstream(programs.path("stopped")) >> number;
        return number;
    }

    /// "done", or the text of the error.
    std::string copy(Names names, TransferEndpoint from, TransferEndpoint to)
    {
        return outcomeOf(start(std::move(names), std::move(from), std::move(to)));
    }

    std::string outcomeOf(Started<void> const &copying)
    {
        finish(copying);
        try {
            copying.value();
        } catch (std::exception const &failure) {
            return failure.what();
        }
        return "done";
    }

    /// For what happens without this loop.
    void waitUntil(std::function<bool()> condition)
    {
        auto const clock = engine.clock();
        auto const limit = clock->steadyNow() + std::chrono::minutes(1); // only a hang reaches it
        while (!condition() && clock->steadyNow() < limit)
            loop.run(clock->sleep(std::chrono::milliseconds(1)));
        EXPECT_TRUE(condition()) << "what was waited for did not come about";
    }

    std::vector<TransferProgress> reports()
    {
        std::lock_guard const lock(mutex);
        return noted;
    }

    /// A tree of many kinds of entries.
    void makeTree(std::string const &name)
    {
        folder.folder(name);
        folder.folder(name + "/empty");
        folder.file(name + "/file", "content");
        folder.file(name + "/large", std::string(300'000, 'x'));
        folder.file(name + "/-n it's \"\xFF\xC3\xA4\" \n", "odd");
        folder.link(name + "/broken", "/none");
        folder.link(name + "/link", "file");
        std::filesystem::create_hard_link(folder.path(name + "/file"), folder.path(name + "/hard"));
        ASSERT_EQ(::mkfifo(folder.path(name + "/fifo").c_str(), 0640), 0);
        ASSERT_EQ(::chmod(folder.path(name + "/large").c_str(), 04751), 0);
        ASSERT_EQ(::chmod(folder.path(name + "/empty").c_str(), 01700), 0);
        setTime(name + "/file", -1000);
        setTime(name + "/large", 4'000'000'000);
    }

    void setTime(std::string const &name, std::int64_t seconds)
    {
        timespec const times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, folder.path(name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    }

    /// Fails the test where the copy of a name differs from its source.
    void expectSame(std::string const &name) { expectSameTree(folder.path(name), local.path(name)); }

    static void expectSameTree(std::string const &from, std::string const &to)
    {
        struct stat source;
        struct stat target;
        ASSERT_EQ(::lstat(from.c_str(), &source), 0) << from;
        ASSERT_EQ(::lstat(to.c_str(), &target), 0) << to;
        EXPECT_EQ(source.st_mode, target.st_mode) << to;
        if (!S_ISLNK(source.st_mode))
            EXPECT_EQ(source.st_mtim.tv_sec, target.st_mtim.tv_sec) << to;
        if (S_ISREG(source.st_mode)) {
            EXPECT_TRUE(contentOf(from) == contentOf(to)) << to;
            EXPECT_EQ(source.st_nlink, target.st_nlink) << to;
        }
        if (S_ISLNK(source.st_mode))
            EXPECT_EQ(std::filesystem::read_symlink(from), std::filesystem::read_symlink(to));
        if (!S_ISDIR(source.st_mode))
            return;
        EXPECT_EQ(namesIn(from), namesIn(to));
        for (auto const &name : namesIn(from))
            expectSameTree(from + "/" + name, to + "/" + name);
    }

    static std::set<std::string> namesIn(std::string const &path)
    {
        std::set<std::string> names;
        for (auto const &entry : std::filesystem::directory_iterator(path))
            names.insert(entry.path().filename().string());
        return names;
    }

    std::shared_ptr<TransferEngine> transfer; ///< the last one

private:
    void note(TransferProgress const &progress)
    {
        std::lock_guard const lock(mutex);
        noted.push_back(progress);
    }

    TemporaryFolder programs; ///< of the host

    std::mutex mutex;
    // Under the mutex.
    std::vector<TransferProgress> noted;
};

} // namespace tw::test
