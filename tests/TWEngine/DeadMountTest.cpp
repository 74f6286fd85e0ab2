#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/TestMount.h"
#include "tests/support/Listings.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::UnorderedElementsAre;

/// This machine with four mounts that never answer.
///
///     home/file  home/nas -> ../dead0  home/mounted/ (dead too)  dead0/ ... dead3/
class DeadMountTest : public testing::Test {
protected:
    DeadMountTest()
    {
        folder.folder("home");
        folder.file("home/file");
        folder.link("home/nas", "../dead0");
        for (int number = 0; number < 4; ++number)
            mounts.push_back(TestMount::silent(folder.folder("dead" + std::to_string(number))));
    }

    ~DeadMountTest() override
    {
        // What hangs comes back with a failure, so that the threads can be joined.
        mounts.clear();
        loop.runUntil([&] { return std::ranges::all_of(hanging, [](auto const &each) { return each.isDone(); }); });
    }

    void lookAt(std::string const &path, FetchPriority priority = FetchPriority::interactive)
    {
        hanging.push_back(loop.start(provider.fetch(path, 1, priority)));
        loop.drain();
    }

    auto namesIn(std::string const &path)
    {
        auto const listings = loop.run(provider.fetch(path, 1, FetchPriority::interactive));
        return names(listings.begin()->second);
    }

    TemporaryFolder folder;
    std::vector<TestMount> mounts;
    TestLoop loop;
    EngineRuntime runtime;
    LocalProvider provider{runtime};
    std::vector<Started<Listings>> hanging;
};

TEST_F(DeadMountTest, foldersElsewhereAreListed)
{
    for (auto const &mount : mounts) {
        for (int looks = 0; looks < 4; ++looks) {
            lookAt(mount.path());
            lookAt(mount.path(), FetchPriority::background);
        }
    }
    EXPECT_THAT(namesIn(folder.path("home")), UnorderedElementsAre("file", "nas"));
    EXPECT_TRUE(std::ranges::none_of(hanging, [](auto const &each) { return each.isDone(); }));
}

TEST_F(DeadMountTest, aLinkIntoADeadMountBlocksOnlyThoseWhoFollowIt)
{
    for (int looks = 0; looks < 4; ++looks)
        lookAt(folder.path("home/nas"));
    EXPECT_THAT(namesIn(folder.path("home")), UnorderedElementsAre("file", "nas"));
    EXPECT_EQ(loop.run(provider.fileSize(folder.path("home/nas"))), 8) << "of the link itself";
    loop.run(provider.rename(folder.path("home/nas"), folder.path("home/elsewhere")));
    EXPECT_THAT(namesIn(folder.path("home")), UnorderedElementsAre("file", "elsewhere"));
}

TEST_F(DeadMountTest, theFolderOfADeadMountIsListedWithIt)
{
    for (int looks = 0; looks < 3; ++looks) {
        auto const listings = loop.run(provider.fetch(folder.path(), 1, FetchPriority::interactive));
        auto const &shown = listings.begin()->second;
        EXPECT_THAT(names(shown), UnorderedElementsAre("home", "dead0", "dead1", "dead2", "dead3"));
        for (auto const &entry : shown.entries()) {
            EXPECT_EQ(entry.kind, EntryKind::directory);
            EXPECT_EQ(entry.mtime != 0, shown.nameBytes(entry) == "home");
        }
    }
}

TEST_F(DeadMountTest, aMountThatAnswersIsListedWithItsAttributes)
{
    auto const shown = loop.run(provider.fetch("/", 1, FetchPriority::interactive)).at("/");
    for (auto const &entry : shown.entries()) {
        if (shown.nameBytes(entry) == "proc") {
            EXPECT_EQ(entry.kind, EntryKind::directory);
            EXPECT_EQ(entry.mode, 0555);
            EXPECT_NE(entry.mtime, 0);
            return;
        }
    }
    FAIL() << "/ without proc";
}

TEST_F(DeadMountTest, whatIsMountedAnewIsNotBlockedByWhatWasThereBefore)
{
    for (int looks = 0; looks < 3; ++looks)
        lookAt(mounts[0].path());
    auto const path = mounts[0].path();
    mounts[0].end();
    auto const anew = TestMount::slow(path, 3, std::chrono::microseconds(0));
    EXPECT_THAT(namesIn(path), UnorderedElementsAre("file0", "file1", "file2"));
}

} // namespace
} // namespace tw::test
