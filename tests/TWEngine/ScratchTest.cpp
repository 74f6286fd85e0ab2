#include "TWEngine/Platform/Scratch.h"

#include "TWCore/Model/FileOperationError.h"
#include "tests/support/DiskRows.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <csignal>

#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

mode_t modeOf(std::string const &path)
{
    struct stat status{};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777U;
}

/// The number of a process that has ended and was waited for.
pid_t deadProcess()
{
    auto const child = ::fork();
    if (child == 0)
        ::_exit(0);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    return child;
}

class ScratchTest : public testing::Test {
protected:
    ScratchTest() : before(::umask(0)) {} // a generous user must not make it anybody else's

    ~ScratchTest() override { ::umask(before); }

    std::string of(pid_t process) const { return "Tarnwick-diff-" + std::to_string(process); }

    TemporaryFolder folder;
    Scratch::Place const place{.base = folder.path("cache/scratch")};

private:
    mode_t const before;
};

TEST_F(ScratchTest, aFolderIsItsUsersAloneAndNamesItsProcess)
{
    auto const made = Scratch::directory("open", place);
    EXPECT_EQ(made, place.base + "/Tarnwick-open-" + std::to_string(::getpid()));
    EXPECT_EQ(modeOf(made), 0700U);
    EXPECT_EQ(modeOf(place.base), 0700U);
    EXPECT_EQ(modeOf(folder.path("cache")), 0700U);
    EXPECT_THAT(Scratch::newFolder("add", place), MatchesRegex(".*/Tarnwick-add-[0-9]+/tw-add-[0-9a-f]{8}"));
}

TEST_F(ScratchTest, aFolderThatIsThereIsMadePrivateAgain)
{
    auto const made = Scratch::directory("open", place);
    ASSERT_EQ(::chmod(made.c_str(), 0777), 0);
    ASSERT_EQ(::chmod(place.base.c_str(), 0755), 0);
    EXPECT_EQ(Scratch::directory("open", place), made);
    EXPECT_EQ(modeOf(made), 0700U);
    EXPECT_EQ(modeOf(place.base), 0700U);
}

TEST_F(ScratchTest, aLinkOrAFileInItsPlaceIsRefused)
{
    auto const target = folder.folder("elsewhere");
    ASSERT_EQ(::chmod(target.c_str(), 0755), 0);
    folder.folder("cache");
    auto const base = folder.link("cache/scratch", target);
    EXPECT_THROW(Scratch::directory("open", place), FileOperationError::Failed);
    EXPECT_EQ(modeOf(target), 0755U);
    ASSERT_EQ(::unlink(base.c_str()), 0);
    folder.file("cache/scratch");
    EXPECT_THROW(Scratch::directory("open", place), FileOperationError::Failed);
}

TEST_F(ScratchTest, aFileIsMadeEmptyAndItsUsersInPlaceOfWhatIsThere)
{
    auto const target = folder.file("target", "stays");
    auto const old = folder.file("old", "text");
    ASSERT_EQ(::chmod(old.c_str(), 0666), 0);
    for (auto const &path : {old, folder.link("link", target), folder.path("new")}) {
        Scratch::makeFile(path);
        EXPECT_EQ(contentOf(path), "") << path;
        EXPECT_EQ(modeOf(path), 0600U) << path;
    }
    EXPECT_EQ(contentOf(target), "stays");
    EXPECT_THROW(Scratch::makeFile(folder.path("no/folder")), FileOperationError::Failed);
}

TEST_F(ScratchTest, aFetchedFileIsMarkedWithItsOriginAndCannotBeExecuted)
{
    auto const file = folder.file("run.sh", "text");
    ASSERT_EQ(::chmod(file.c_str(), 04755), 0);
    EXPECT_FALSE(Scratch::isMarkedAsFetched(file));
    Scratch::markAsFetched(file, "web");
    EXPECT_EQ(modeOf(file), 0644U);
    // A file system without marks keeps none; the same question decides for the mark of ours.
    auto const takesMarks = ::setxattr(file.c_str(), "user.test", "x", 1, 0) == 0;
    EXPECT_EQ(Scratch::isMarkedAsFetched(file), takesMarks);
    std::array<char, 64> origin{};
    auto const length = ::getxattr(file.c_str(), "user.xdg.origin.url", origin.data(), origin.size());
    EXPECT_EQ(std::string(origin.data(), length < 0 ? 0 : static_cast<std::size_t>(length)),
              takesMarks ? "ssh://web" : "");
    EXPECT_THROW(Scratch::markAsFetched(folder.link("link", file), "web"), FileOperationError::Failed);
}

TEST_F(ScratchTest, theLaunchRemovesFoldersOfDeadProcessesOnly)
{
    Scratch::directory("diff", place);
    auto const dead = place.base + '/' + of(deadProcess());
    auto const locked = dead + "/fetched/folder";
    std::filesystem::create_directories(locked);
    std::filesystem::create_symlink(folder.folder("elsewhere"), dead + "/link");
    folder.file("elsewhere/kept");
    ASSERT_EQ(::chmod(locked.c_str(), 0), 0);
    ASSERT_EQ(::chmod((dead + "/fetched").c_str(), 0500), 0);
    for (auto const *const name : {"Tarnwick-diff-abc", "Tarnwick-diff-", "Tarnwick-", "Tarnwick-diff-0", "other-1"})
        std::filesystem::create_directory(place.base + '/' + name);
    Scratch::remove(place);
    EXPECT_THAT(namesOnDisk(place.base), ElementsAre("Tarnwick-", "Tarnwick-diff-", "Tarnwick-diff-0", of(::getpid()),
                                                     "Tarnwick-diff-abc", "other-1"));
    EXPECT_THAT(namesOnDisk(folder.path("elsewhere")), ElementsAre("kept"));
}

TEST_F(ScratchTest, theEndRemovesFoldersOfItsOwnProcessOnly)
{
    auto const other = deadProcess();
    Scratch::makeFile(Scratch::directory("diff", place) + "/file");
    Scratch::directory("open", place);
    std::filesystem::create_directory(place.base + '/' + of(other));
    Scratch::remove(::getpid(), place);
    EXPECT_THAT(namesOnDisk(place.base), ElementsAre(of(other)));
    Scratch::remove(other, place);
    EXPECT_THAT(namesOnDisk(place.base), IsEmpty());
}

} // namespace
} // namespace tw::test
