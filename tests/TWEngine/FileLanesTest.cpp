#include "TWEngine/Runtime/FileLanes.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <semaphore>
#include <thread>

namespace tw::test {
namespace {

using LastLink = FileLanes::LastLink;

/// Lanes over a table of mounts that the test writes: folders of the test count as mounts.
class FileLanesTest : public testing::Test {
protected:
    FileLanesTest()
    {
        for (auto const *name : {"home", "dead", "other"})
            folder.folder(name);
        std::string table = "1 0 0:1 / / rw - x x rw\n";
        int number = 2;
        for (auto const *name : {"home", "dead", "other"})
            table += std::to_string(number++) + " 1 0:1 / " + folder.path(name) + " rw - x x rw\n";
        mountInfo = folder.file("mountinfo", table);
        make({});
    }

    void make(FileLanes::Limits limits) { lanes = std::make_unique<FileLanes>(limits, mountInfo.c_str()); }

    auto at(std::string const &name, LastLink last = LastLink::follow)
    {
        return lanes->run(folder.path(name), last, WorkPriority::interactive,
                          [](std::string const &place) { return place; });
    }

    /// On a thread of a lane.
    void block()
    {
        begun.release();
        loop.context()->post([] {}); // wakes the loop
        gate.acquire();
    }

    /// Occupies a thread of the lane until it is released.
    Started<void> block(std::string const &name, WorkPriority priority = WorkPriority::interactive)
    {
        auto const blocked = loop.start(lanes->run(folder.path(name), LastLink::follow, priority,
                                                   [this](std::string const & /*place*/) { block(); }));
        loop.runUntil([this] { return begun.try_acquire(); });
        all.push_back(blocked);
        return blocked;
    }

    void releaseAll()
    {
        gate.release(std::ssize(all));
        loop.runUntil([&] { return std::ranges::all_of(all, [](auto const &each) { return each.isDone(); }); });
    }

    static std::ptrdiff_t threads()
    {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    }

    TemporaryFolder folder;
    std::string mountInfo;
    TestLoop loop;
    std::counting_semaphore<> begun{0};
    std::counting_semaphore<> gate{0};
    std::vector<Started<void>> all;
    std::unique_ptr<FileLanes> lanes;
};

TEST_F(FileLanesTest, aMountThatHangsBlocksNoOtherMount)
{
    block("dead/a");
    block("dead/b");
    auto const waiting = loop.start(at("dead/c"));
    EXPECT_EQ(loop.run(at("home/x")), folder.path("home/x"));
    EXPECT_FALSE(waiting.isDone()) << "two threads a lane";
    releaseAll();
    loop.runUntil([&] { return waiting.isDone(); });
}

TEST_F(FileLanesTest, workBehindTheUsersBackTakesNoThreadOfAPerson)
{
    block("home", WorkPriority::background);
    block("home", WorkPriority::background);
    EXPECT_EQ(loop.run(at("home")), folder.path("home"));
    releaseAll();
}

TEST_F(FileLanesTest, aLinkToAMountThatHangsBlocksNotTheMountThatItLiesOn)
{
    folder.link("home/nas", "../dead/data");
    block("home/nas/a");
    block("home/nas/b");
    auto const waiting = loop.start(at("home/nas/c"));
    loop.drain();
    block("home/a");
    EXPECT_EQ(loop.run(at("home/x")), folder.path("home/x"));
    EXPECT_FALSE(waiting.isDone());
    releaseAll();
    loop.runUntil([&] { return waiting.isDone(); });
    EXPECT_EQ(waiting.value(), folder.path("dead/data/c"));
}

TEST_F(FileLanesTest, aLinkThatIsMeantItselfLiesWhereItIs)
{
    folder.link("home/nas", folder.path("dead"));
    EXPECT_EQ(loop.run(at("home/nas", LastLink::keep)), folder.path("home/nas"));
    EXPECT_EQ(loop.run(at("home/nas/x", LastLink::keep)), folder.path("dead/x"));
    EXPECT_EQ(loop.run(at("home/nas")), folder.path("dead"));
}

TEST_F(FileLanesTest, aLinkThatGoesRoundIsLeftToTheSystem)
{
    folder.link("home/round", "../other/round");
    folder.link("other/round", "../home/round");
    folder.link("home/self", "self");
    loop.run(at("home/round"));
    loop.run(at("home/self"));
}

TEST_F(FileLanesTest, workBetweenTwoMountsBlocksNeither)
{
    for (int copies = 0; copies < 2; ++copies) {
        all.push_back(loop.start(lanes->runBetween(folder.path("home/a"), folder.path("dead/b"), LastLink::follow,
                                                   WorkPriority::interactive, [this] { block(); })));
        loop.runUntil([this] { return begun.try_acquire(); });
    }
    EXPECT_EQ(loop.run(at("home/x")), folder.path("home/x"));
    EXPECT_EQ(loop.run(at("dead/x")), folder.path("dead/x"));
    releaseAll();
}

TEST_F(FileLanesTest, whatWorkThrowsIsThrownToTheOneThatAwaits)
{
    auto const failing = [](std::string const & /*place*/) -> int { throw std::runtime_error("no"); };
    EXPECT_THROW(loop.run(lanes->run("/x", LastLink::follow, WorkPriority::interactive, failing)), std::runtime_error);
}

TEST_F(FileLanesTest, aLaneIsFullWhileItsThreadsAreBusy)
{
    auto const dead = lanes->mounts()->mountOf(folder.path("dead"));
    block("dead");
    EXPECT_FALSE(lanes->isFull(dead, WorkPriority::interactive));
    block("dead");
    EXPECT_TRUE(lanes->isFull(dead, WorkPriority::interactive));
    EXPECT_FALSE(lanes->isFull(dead, WorkPriority::background));
    releaseAll();
}

TEST_F(FileLanesTest, threadsWithoutWorkEnd)
{
    make({.idleTime = std::chrono::milliseconds(1)});
    auto const before = threads();
    block("home");
    block("dead");
    EXPECT_EQ(threads(), before + 2);
    releaseAll();
    while (threads() != before)
        std::this_thread::yield();
    EXPECT_EQ(loop.run(at("home/x")), folder.path("home/x")) << "a thread is started anew";
}

TEST_F(FileLanesTest, mountsBeyondTheBoundShareOneLane)
{
    make({.lanes = 2});
    block("home");
    block("dead");
    block("other");
    auto const waiting = loop.start(at("other/x"));
    loop.drain();
    EXPECT_EQ(loop.run(at("home/x")), folder.path("home/x")) << "the first one has a lane of its own";
    EXPECT_FALSE(waiting.isDone()) << "the shared lane has two threads too";
    releaseAll();
    loop.runUntil([&] { return waiting.isDone(); });
}

TEST_F(FileLanesTest, aLaneWithoutWorkMakesRoomForAnotherMount)
{
    make({.lanes = 2, .idleTime = std::chrono::milliseconds(1)});
    auto const before = threads();
    block("home");
    releaseAll();
    while (threads() != before)
        std::this_thread::yield();
    all.clear();
    block("dead");
    block("other");
    block("other/x");
    auto const waiting = loop.start(at("other/y"));
    loop.drain();
    EXPECT_EQ(loop.run(at("dead/x")), folder.path("dead/x"));
    EXPECT_FALSE(waiting.isDone());
    releaseAll();
    loop.runUntil([&] { return waiting.isDone(); });
}

TEST(FileLanesOfThisSystemTest, theTableIsTheKernels)
{
    FileLanes lanes;
    EXPECT_NE(lanes.mounts()->mountOf("/proc/self"), lanes.mounts()->mountOf("/"));
}

TEST(FileLanesOfThisSystemTest, withoutATableAllPathsShareALane)
{
    FileLanes lanes({}, "/nonexistent");
    TestLoop loop;
    EXPECT_EQ(
        loop.run(lanes.run("/a", LastLink::follow, WorkPriority::interactive, [](auto const &place) { return place; })),
        "/a");
}

} // namespace
} // namespace tw::test
