// Searches in a file of a host that are given up.

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Viewing/ViewedFile.h"
#include "tests/support/SSHProviderTest.h"

#include <filesystem>
#include <fstream>

namespace tw::test {
namespace {

using FileSearch::Sought;
using FileSearch::Which;

/// A host whose grep says when it looks for "stuck", and does not come to an end then.
class HostSearchTest : public SSHProviderTest {
protected:
    HostSearchTest()
    {
        auto const grep = tools.file("grep", "#!/bin/sh\ncase $* in *stuck*) echo $$ >" + tools.path("began") +
                                                 "; exec sleep 1000;; esac\nexec /usr/bin/grep \"$@\"\n");
        EXPECT_EQ(::chmod(grep.c_str(), 0755), 0);
        reach(
            {.loginScript = "#!/bin/sh\nPATH=" + tools.path() + ":$PATH exec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n"});
        provider = connected();
        file = ViewedFile::at(engine, provider, path);
        shell = shellOf(provider, CommandSession::work);
    }

    Started<FileSearch::Found> search(std::string pattern, FileSearch::Part part)
    {
        return loop.start(file->find({.sought = {.pattern = std::move(pattern)}, .part = part}));
    }

    std::int64_t found(std::string pattern)
    {
        auto const match = loop.run(file->find({.sought = {.pattern = std::move(pattern)}, .part = {0, size}})).match;
        return match ? match->offset : -1;
    }

    void waitUntil(std::function<bool()> const &condition)
    {
        while (!condition())
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
    }

    void waitForBegin()
    {
        waitUntil([&] { return std::filesystem::exists(began) && std::filesystem::file_size(began) > 0; });
        std::filesystem::remove(began);
    }

    void expectCancelled(Started<FileSearch::Found> const &searching)
    {
        finish(searching);
        EXPECT_THROW(searching.value(), Cancelled);
    }

    /// Searches go on in the same session, and nothing lies about.
    void expectAllIsWell()
    {
        EXPECT_EQ(found("needle"), size - 7);
        EXPECT_EQ(shellOf(provider, CommandSession::work), shell);
        waitUntil([&] { return std::filesystem::is_empty(host->temporary()); });
    }

    TemporaryFolder tools;
    std::string const began = tools.path("began");
    std::string const path = folder.file("log", std::string(1 << 20, '\n') + "needle\n");
    std::int64_t const size = (1 << 20) + 7;
    Provider provider;
    std::shared_ptr<ViewedFile> file;
    std::string shell;
};

TEST_F(HostSearchTest, aStopEndsASearchWhereTheFileIs)
{
    for (auto const end : {size, size - 100'000}) { // without and with a pipe
        auto const searching = search("stuck", {0, end});
        waitForBegin();
        EXPECT_EQ(loop.run(file->read(size - 7, 100)), "needle\n") << "the file can be read meanwhile";
        searching.stop();
        expectCancelled(searching);
        expectAllIsWell();
    }
}

TEST_F(HostSearchTest, aSearchThatIsStoppedBeforeItBeginsDoesNotBegin)
{
    auto const first = search("stuck", {0, size});
    waitForBegin();
    auto const second = search("stuck", {0, size});
    loop.drain();
    second.stop();
    expectCancelled(second);
    first.stop();
    expectCancelled(first);
    expectAllIsWell();
    EXPECT_FALSE(std::filesystem::exists(began));
}

TEST_F(HostSearchTest, aStopAtAnyTimeLeavesNothingThere)
{
    constexpr int times = 40;
    for (int time = 0; time < times; ++time) {
        auto const searching = search("needle", {0, size});
        loop.run(engine.clock()->sleep(std::chrono::microseconds(500 * time)));
        searching.stop();
        finish(searching);
    }
    expectAllIsWell();
}

TEST_F(HostSearchTest, aSearchThatTakesLongSaysHowFarItIs)
{
    std::vector<std::int64_t> reported;
    FileSearch::Question const question{.sought = {.pattern = "stuck"}, .part = {500, 1000}, .farthest = size};
    auto const searching =
        loop.start(file->find(question, [&reported](std::int64_t offset) { reported.push_back(offset); }));
    waitUntil([&] { return !reported.empty(); });
    EXPECT_EQ(reported.front(), 500);
    searching.stop();
    expectCancelled(searching);
    expectAllIsWell();
}

TEST_F(HostSearchTest, bytesAreFoundInALineOfAnyLengthAndAnExpressionSaysThatItIsTooLong)
{
    auto const large = folder.file("large", "needle");
    constexpr std::int64_t far = FileSearch::mostBytesOfGrep + FileSearch::pieceBytes - 3; // over the end of a piece
    std::filesystem::resize_file(large, far);
    std::ofstream(large, std::ios::app) << "needle";
    auto const there = ViewedFile::at(engine, provider, large);
    auto const find = [&](Sought const &sought, Which which) {
        auto const match = loop.run(there->find({sought, {1, far + 6}, which})).match;
        return match ? match->offset : -1;
    };
    EXPECT_EQ(find({.pattern = "needle"}, Which::first), far);
    EXPECT_EQ(find({.pattern = "needle"}, Which::last), far);
    EXPECT_EQ(find({.pattern = "needles"}, Which::first), -1);
    FileSearch::Question const step{.sought = {.pattern = "needle"}, .part = {1, 1 << 20}, .farthest = far + 6};
    EXPECT_EQ(loop.run(there->find(step)), FileSearch::Found{.to = 1 << 20}) << "a step has a shorter line";
    EXPECT_THROW(find({.pattern = "needle", .kind = Sought::Kind::expression}, Which::first), FileSearch::Failed);
}

} // namespace
} // namespace tw::test
