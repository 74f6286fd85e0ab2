#include "TWEngine/Browsing/RemoteFiles.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/DiskRows.h"
#include "tests/support/HeldReader.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include <sys/stat.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::SizeIs;

class RemoteFilesTest : public testing::Test {
protected:
    RemoteFiles::Source source(std::string path, std::optional<std::int64_t> size, std::int64_t mtime = 1)
    {
        return {.provider = host, .connection = "web", .path = std::move(path), .size = size, .mtime = mtime};
    }

    std::string copyOf(RemoteFiles::Source const &wanted) { return loop.run(files->localCopy(wanted)); }

    std::shared_ptr<RemoteFiles> withLimits(RemoteFiles::Limits limits)
    {
        return std::make_shared<RemoteFiles>(engine, place, limits);
    }

    /// The folders of all copies there are.
    std::vector<std::string> folders()
    {
        engine.workers().waitUntilIdle();
        return namesOnDisk(Scratch::directory("open", place));
    }

    TemporaryFolder folder;
    Scratch::Place const place{.base = folder.path("scratch")};
    TestLoop loop;
    EngineRuntime engine;
    std::shared_ptr<HeldReader> const host = std::make_shared<HeldReader>();
    std::shared_ptr<RemoteFiles> files = withLimits({});
};

TEST_F(RemoteFilesTest, aSmallFileIsReadOnceThroughTheSessionThatIsThere)
{
    auto const path = copyOf(source("/srv/a b.txt", 4));
    EXPECT_THAT(path, EndsWith("/a b.txt"));
    EXPECT_EQ(contentOf(path), "text");
    struct stat status{};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
    EXPECT_EQ(copyOf(source("/srv/a b.txt", 4)), path);
    EXPECT_EQ(loop.run(files->known(source("/srv/a b.txt", 4))), path);
    EXPECT_THAT(host->requests, ElementsAre("read /srv/a b.txt"));
}

TEST_F(RemoteFilesTest, whatIsLargeOrALinkOrHasGrownIsDownloaded)
{
    copyOf(source("/large", 65537));
    auto const linked = copyOf(source("/link", std::nullopt));
    auto const grown = copyOf(source("/grown", 3));
    EXPECT_EQ(contentOf(grown), "text");
    EXPECT_NE(copyOf(source("/link", std::nullopt)), linked) << "nothing is known of what a link leads to";
    EXPECT_THAT(host->requests,
                ElementsAre("download /large", "download /link", "read /grown", "download /grown", "download /link"));
}

TEST_F(RemoteFilesTest, whatHasChangedThereOrHereIsFetchedAnewBesideTheOldCopy)
{
    auto const first = copyOf(source("/a", 4, 1));
    host->content = "news";
    auto const second = copyOf(source("/a", 4, 2));
    EXPECT_EQ(contentOf(second), "news");
    std::ofstream(second, std::ios::app) << " and more";
    auto const third = copyOf(source("/a", 4, 2));
    EXPECT_EQ(contentOf(third), "news");
    EXPECT_EQ(contentOf(second), "news and more") << "a program may have it open";
    EXPECT_EQ(contentOf(first), "text");
    std::filesystem::remove(third);
    EXPECT_EQ(contentOf(copyOf(source("/a", 4, 2))), "news");
}

TEST_F(RemoteFilesTest, thoseWhoWaitForOneFileShareItsFetch)
{
    host->isHeld = true;
    auto const first = loop.start(files->localCopy(source("/a", 70000)));
    auto const second = loop.start(files->localCopy(source("/a", 70000)));
    loop.runUntil([&] { return host->held.size() == 1; });
    first.stop();
    loop.runUntil([&] { return first.isDone(); });
    EXPECT_TRUE(first.failed());
    host->held.front()->succeed({});
    loop.runUntil([&] { return second.isDone(); });
    EXPECT_EQ(contentOf(second.value()), "text");
    EXPECT_THAT(host->requests, SizeIs(1));
}

TEST_F(RemoteFilesTest, aFetchEndsWithTheLastWhoWaitsForItAndLeavesNothing)
{
    host->isHeld = true;
    auto const first = loop.start(files->localCopy(source("/a", 70000)));
    auto const second = loop.start(files->localCopy(source("/a", 70000)));
    loop.runUntil([&] { return host->held.size() == 1; });
    first.stop();
    second.stop();
    loop.runUntil([&] { return host->stopped == 1 && first.isDone() && second.isDone(); });
    loop.drain();
    EXPECT_THAT(folders(), SizeIs(0));
    host->isHeld = false;
    EXPECT_EQ(contentOf(copyOf(source("/a", 70000))), "text");
}

TEST_F(RemoteFilesTest, onlySoManyCopiesAreKeptAndTheLastUsedOnesStay)
{
    files = withLimits({.copies = 2, .bytes = 100});
    auto const first = copyOf(source("/1", 4));
    copyOf(source("/2", 4));
    copyOf(source("/1", 4));
    copyOf(source("/3", 4));
    EXPECT_THAT(folders(), SizeIs(2));
    EXPECT_EQ(copyOf(source("/1", 4)), first);
    host->content = std::string(101, 'x');
    copyOf(source("/large", 101));
    EXPECT_THAT(folders(), SizeIs(1)) << "the one that was asked for stays, however large";
}

TEST_F(RemoteFilesTest, aPlaceThatCannotReadFilesSaysSo)
{
    auto wanted = source("/a", 4);
    wanted.provider = nullptr;
    try {
        copyOf(wanted);
        FAIL() << "nothing was thrown";
    } catch (RemoteFiles::NoReader const &failure) {
        EXPECT_STREQ(failure.what(), "web cannot read files");
    }
    EXPECT_THAT(folders(), SizeIs(0));
}

} // namespace
} // namespace tw::test
