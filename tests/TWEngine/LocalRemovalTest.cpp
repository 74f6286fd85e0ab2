#include "TWEngine/Browsing/LocalRemoval.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/FileOperationError.h"
#include "tests/support/DiskRows.h"
#include "tests/support/PrivateMount.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WithoutPrivileges.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LocalRemovalTest : public testing::Test {
protected:
    std::string failureOf(std::string const &path) const
    {
        try {
            removeForGood(path, {});
        } catch (FileOperationError::Failed const &failure) {
            return failure.what();
        }
        return "no failure";
    }

    /// With one file in it.
    std::string lockedFolder(std::string const &name) const
    {
        auto const path = folder.folder(name);
        folder.file(name + "/file", "kept");
        ::chmod(path.c_str(), locked);
        return path;
    }

    static mode_t modeOf(std::string const &path)
    {
        struct stat status;
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & ACCESSPERMS : 0;
    }

    static constexpr mode_t locked = 0555;
    TemporaryFolder folder;
};

TEST_F(LocalRemovalTest, everythingBelowGoesAndNothingBeside)
{
    folder.folder("tree/a/b");
    folder.folder("tree/empty");
    for (auto const &name : hostileNames()) {
        folder.file("tree/" + name, "x");
        folder.file("tree/a/b/" + name, "x");
    }
    folder.file("beside", "kept");
    removeForGood(folder.path("tree"), {});
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("beside"));
}

TEST_F(LocalRemovalTest, aLinkGoesAndWhatItLeadsToStays)
{
    folder.folder("kept");
    folder.file("kept/file", "kept");
    folder.folder("tree");
    folder.link("tree/link", folder.path("kept"));
    removeForGood(folder.link("direct", folder.path("kept")), {});
    removeForGood(folder.path("tree"), {});
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("kept"));
    EXPECT_EQ(contentOf(folder.path("kept/file")), "kept");
}

TEST_F(LocalRemovalTest, aTreeMayBeDeeperThanTheSystemOpensFilesOrNamesPaths)
{
    constexpr int levels = 3000;
    auto const top = folder.folder("tree");
    {
        auto here = ::open(top.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int level = 0; level < levels; ++level) {
            ASSERT_EQ(::mkdirat(here, "deep", 0700), 0);
            auto const next = ::openat(here, "deep", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            ASSERT_EQ(::close(here), 0);
            here = next;
        }
        ASSERT_EQ(::close(here), 0);
    }
    removeForGood(top, {});
    EXPECT_THAT(namesOnDisk(folder.path()), IsEmpty());
}

TEST_F(LocalRemovalTest, whatCannotBeDeletedIsNamed)
{
    auto const missing = folder.path("missing");
    EXPECT_EQ(failureOf(missing), "delete failed on " + missing + ": No such file or directory");
    EXPECT_NE(failureOf(missing + '\0' + "x"), "no failure");
    EXPECT_THAT(failureOf("/proc/self/fdinfo"), testing::StartsWith("delete failed on /proc/self/fdinfo"));
}

TEST_F(LocalRemovalTest, aLockedFolderStaysUnlessItIsToGo)
{
    WithoutPrivileges const user;
    folder.folder("tree/a");
    lockedFolder("tree/a/locked");
    auto const linked = lockedFolder("linked");
    folder.link("tree/a/link", linked);
    ::chmod(folder.path("tree/a").c_str(), 0);
    ::chmod(folder.path("tree").c_str(), locked);
    EXPECT_THAT(failureOf(folder.path("tree")), testing::HasSubstr("Permission denied"));
    removeForGood(folder.path("tree"), {}, LockedFolders::go);
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("linked"));
    EXPECT_EQ(modeOf(linked), locked);
}

TEST_F(LocalRemovalTest, whatIsMountedStaysWhole)
{
    auto const mounted = folder.folder("mounted");
    auto const disk = folder.folder("disk");
    folder.file("disk/file", "kept");
    auto const expectation = [&] {
        return failureOf(mounted) == "delete failed on " + mounted + ": Device or resource busy" &&
               contentOf(mounted + "/file") == "kept";
    };
    EXPECT_EXIT(exitWithMount(disk, mounted, expectation), testing::ExitedWithCode(0), "");
}

TEST_F(LocalRemovalTest, lockedFoldersThatAreLeftAreLockedAgain)
{
    auto const mounted = folder.folder("tree/a/mounted");
    auto const expectation = [&] {
        WithoutPrivileges const user;
        for (std::string const name : {"tree/a", "tree"})
            ::chmod(folder.path(name).c_str(), locked);
        try {
            removeForGood(folder.path("tree"), {}, LockedFolders::go);
        } catch (FileOperationError::Failed const &) {
            return modeOf(folder.path("tree/a")) == locked && modeOf(folder.path("tree")) == locked;
        }
        return false;
    };
    EXPECT_EXIT(exitWithMount(folder.folder("disk"), mounted, expectation), testing::ExitedWithCode(0), "");
}

TEST_F(LocalRemovalTest, aStopEndsItBeforeTheNextEntry)
{
    auto const file = folder.file("file", "kept");
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(removeForGood(file, stop.get_token()), Cancelled);
    EXPECT_EQ(contentOf(file), "kept");
}

} // namespace
} // namespace tw::test
