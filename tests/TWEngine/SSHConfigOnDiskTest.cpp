#include "TWEngine/SSHConfig/SSHConfigOnDisk.h"

#include "TWEngine/SSHConfig/SSHConfigError.h"
#include "tests/support/DiskRows.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::UnorderedElementsAre;

/// A home of its own, with what a test puts into .ssh.
class SSHConfigOnDiskTest : public testing::Test {
protected:
    TemporaryFolder home;
    std::string const path = home.path(".ssh/config");
    std::string const backup = path + ".tw-backup";

    void makeConfig(std::string_view text, mode_t mode = 0600) const
    {
        home.folder(".ssh");
        home.file(".ssh/config", text);
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }

    std::optional<std::string> read() const { return SSHConfigOnDisk::read(path); }

    void write(std::optional<std::string> const &before, std::string const &text) const
    {
        SSHConfigOnDisk::write(path, before, text);
    }

    static mode_t modeOf(std::string const &file)
    {
        struct stat status{};
        EXPECT_EQ(lstat(file.c_str(), &status), 0) << file;
        return status.st_mode & 07777U;
    }
};

/// No file may grow beyond so many bytes, as on a disk that is full.
class SmallFiles {
public:
    explicit SmallFiles(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &before);
        rlimit const small{.rlim_cur = bytes, .rlim_max = before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }

    ~SmallFiles()
    {
        setrlimit(RLIMIT_FSIZE, &before);
        std::signal(SIGXFSZ, actionBefore);
    }

    SmallFiles(SmallFiles const &) = delete;
    SmallFiles &operator=(SmallFiles const &) = delete;

private:
    void (*const actionBefore)(int) = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
};

TEST_F(SSHConfigOnDiskTest, itIsReadAsItIs)
{
    std::string const text("Host a\r\n\0\xFF", 10);
    makeConfig(text);
    EXPECT_EQ(read(), text);
    makeConfig("");
    EXPECT_EQ(read(), "");
}

TEST_F(SSHConfigOnDiskTest, oneThatIsNotThereIsNothing)
{
    EXPECT_EQ(read(), std::nullopt);
    home.folder(".ssh");
    EXPECT_EQ(read(), std::nullopt);
    home.link(".ssh/config", home.path("nowhere"));
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_EQ(SSHConfigOnDisk::read(home.file("file") + "/config"), std::nullopt);
}

TEST_F(SSHConfigOnDiskTest, whatIsNoFileIsNotRead)
{
    EXPECT_THROW(SSHConfigOnDisk::read(home.folder("folder")), SSHConfigError::NotReadable);
    ASSERT_EQ(mkfifo(home.path("pipe").c_str(), 0600), 0);
    EXPECT_THROW(SSHConfigOnDisk::read(home.path("pipe")), SSHConfigError::NotReadable);
    EXPECT_THROW(SSHConfigOnDisk::read("/dev/zero"), SSHConfigError::NotReadable);
    EXPECT_THROW(SSHConfigOnDisk::read(home.link("loop", home.path("loop"))), SSHConfigError::NotReadable);
}

TEST_F(SSHConfigOnDiskTest, oneThatIsTooLargeIsNotRead)
{
    makeConfig(std::string(SSHConfigOnDisk::maxBytes, '#'));
    EXPECT_EQ(read()->size(), SSHConfigOnDisk::maxBytes);
    makeConfig(std::string(SSHConfigOnDisk::maxBytes + 1, '#'));
    EXPECT_THROW(read(), SSHConfigError::NotReadable);
    fs::resize_file(path, std::uintmax_t{1} << 40U); // a hole, of which no more is read than of another
    EXPECT_THROW(read(), SSHConfigError::NotReadable);
}

TEST_F(SSHConfigOnDiskTest, theFailureNamesTheFile)
{
    try {
        SSHConfigOnDisk::read(home.path());
        ADD_FAILURE() << "it was read";
    } catch (SSHConfigError::NotReadable const &failure) {
        EXPECT_EQ(failure.path, home.path());
        EXPECT_EQ(std::string(failure.what()), home.path() + ": not a file");
    }
}

TEST_F(SSHConfigOnDiskTest, theFirstOneIsMadeWithItsFolder)
{
    auto const before = umask(0);
    write(std::nullopt, "Host a\n");
    umask(before);
    EXPECT_EQ(read(), "Host a\n");
    EXPECT_EQ(modeOf(home.path(".ssh")), 0700U);
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_THAT(namesOnDisk(home.path(".ssh")), UnorderedElementsAre("config")) << "there is nothing to back up";
}

TEST_F(SSHConfigOnDiskTest, itIsReplacedWhole)
{
    makeConfig("old and longer");
    write("old and longer", "new");
    EXPECT_EQ(contentOf(path), "new");
    EXPECT_THAT(namesOnDisk(home.path(".ssh")), UnorderedElementsAre("config", "config.tw-backup"));
}

TEST_F(SSHConfigOnDiskTest, itIsTheUsersAloneAfterwards)
{
    for (mode_t const mode : {0644U, 0666U, 0660U, 0400U, 0600U}) {
        makeConfig("old", mode);
        write("old", "new");
        EXPECT_EQ(modeOf(path), 0600U) << mode;
        fs::remove(path);
    }
}

TEST_F(SSHConfigOnDiskTest, theBackupIsOfTheVeryFirst)
{
    makeConfig("first", 0644);
    write("first", "second");
    EXPECT_EQ(contentOf(backup), "first");
    EXPECT_EQ(modeOf(backup), 0600U);
    write("second", "third");
    EXPECT_EQ(contentOf(backup), "first");
}

TEST_F(SSHConfigOnDiskTest, aLinkStaysAndItsFileIsReplaced)
{
    home.folder(".ssh");
    home.folder("dotfiles");
    auto const file = home.file("dotfiles/ssh", "old");
    home.link(".ssh/second", "../dotfiles/ssh");
    home.link(".ssh/config", "second");
    write("old", "new");
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_TRUE(fs::is_symlink(home.path(".ssh/second")));
    EXPECT_EQ(contentOf(file), "new");
    EXPECT_EQ(contentOf(backup), "old");
    EXPECT_THAT(namesOnDisk(home.path("dotfiles")), UnorderedElementsAre("ssh"));
}

TEST_F(SSHConfigOnDiskTest, aLinkThatLeadsNowhereIsFilled)
{
    home.folder(".ssh");
    home.folder("dotfiles");
    home.link(".ssh/config", home.path("dotfiles/ssh"));
    write(std::nullopt, "new");
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(contentOf(home.path("dotfiles/ssh")), "new");
    EXPECT_EQ(modeOf(home.path("dotfiles/ssh")), 0600U);
}

TEST_F(SSHConfigOnDiskTest, aLinkIntoAFolderThatIsNotThereIsAFailure)
{
    home.folder(".ssh");
    home.link(".ssh/config", home.path("nowhere/ssh"));
    EXPECT_THROW(write(std::nullopt, "new"), SSHConfigError::NotWritable);
    EXPECT_TRUE(fs::is_symlink(path));
}

TEST_F(SSHConfigOnDiskTest, aLinkToItselfIsAFailure)
{
    home.folder(".ssh");
    home.link(".ssh/config", path);
    EXPECT_THROW(write(std::nullopt, "new"), SSHConfigError::NotReadable);
}

TEST_F(SSHConfigOnDiskTest, anothersChangeIsNotOverwritten)
{
    makeConfig("another's");
    EXPECT_THROW(write("old", "new"), SSHConfigError::ChangedMeanwhile);
    EXPECT_THROW(write(std::nullopt, "new"), SSHConfigError::ChangedMeanwhile);
    EXPECT_EQ(contentOf(path), "another's");
    EXPECT_THAT(namesOnDisk(home.path(".ssh")), UnorderedElementsAre("config"));
    fs::remove(path);
    EXPECT_THROW(write("old", "new"), SSHConfigError::ChangedMeanwhile) << "it was removed";
    EXPECT_EQ(read(), std::nullopt);
}

TEST_F(SSHConfigOnDiskTest, anEmptyFileIsNotNoFile)
{
    makeConfig("");
    EXPECT_THROW(write(std::nullopt, "new"), SSHConfigError::ChangedMeanwhile);
    write("", "new");
    EXPECT_EQ(contentOf(path), "new");
}

TEST_F(SSHConfigOnDiskTest, aFullDiskLeavesTheFileAndNothingElse)
{
    makeConfig("old");
    std::string failure;
    {
        SmallFiles const full(4);
        try {
            write("old", "new and longer than there is room for");
        } catch (SSHConfigError::NotWritable const &error) {
            failure = error.what();
        }
    }
    EXPECT_THAT(failure, EndsWith("File too large"));
    EXPECT_EQ(contentOf(path), "old");
    EXPECT_THAT(namesOnDisk(home.path(".ssh")), UnorderedElementsAre("config", "config.tw-backup"));
}

TEST_F(SSHConfigOnDiskTest, aBackupThatDoesNotFitStopsTheWriting)
{
    makeConfig("old and long");
    {
        SmallFiles const full(4);
        EXPECT_THROW(write("old and long", "new"), SSHConfigError::NotWritable);
    }
    EXPECT_EQ(contentOf(path), "old and long");
    EXPECT_THAT(namesOnDisk(home.path(".ssh")), UnorderedElementsAre("config")) << "half a backup is none";
}

TEST_F(SSHConfigOnDiskTest, aFolderInWhichNothingCanBeMadeIsAFailure)
{
    // Nobody, not even root, can make a file there.
    home.folder(".ssh");
    home.link(".ssh/config", "/proc/version");
    auto const before = read();
    ASSERT_TRUE(before);
    EXPECT_THROW(write(before, "new"), SSHConfigError::NotWritable);
    EXPECT_EQ(read(), before);
}

TEST_F(SSHConfigOnDiskTest, aFolderThatCannotBeMadeIsAFailure)
{
    auto const below = home.file("file") + "/.ssh/config";
    EXPECT_THROW(SSHConfigOnDisk::write(below, std::nullopt, "new"), SSHConfigError::NotWritable);
}

} // namespace
} // namespace tw::test
