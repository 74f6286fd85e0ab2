#include "TWEngine/Shell/FolderFingerprint.h"

#include "tests/support/HostShell.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tw::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class FolderFingerprintTest : public HostShellTest {
protected:
    std::string fingerprint(std::string const &path) { return run(FolderFingerprint::posix(path)).output; }
};

TEST_F(FolderFingerprintTest, itChangesWithNamesSizesAndTimesAndWithNothingElse)
{
    auto const file = folder.file("it's a file", "1");
    auto const path = folder.path() + '/';
    auto before = fingerprint(path);
    EXPECT_EQ(fingerprint(path), before);
    auto const expectChange = [&](char const *what) {
        auto const now = fingerprint(path);
        EXPECT_NE(now, before) << what;
        before = now;
    };
    folder.file("it's a file", "12");
    expectChange("a size");
    fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(48));
    expectChange("a time");
    folder.file(".hidden");
    expectChange("a hidden name");
    fs::rename(file, folder.path("another"));
    expectChange("a name");
}

TEST_F(FolderFingerprintTest, aLinkIsLookedThroughBehindASlash)
{
    auto const target = folder.folder("target");
    auto const link = folder.link("link", target);
    auto const before = fingerprint(link + '/');
    folder.file("target/new");
    EXPECT_NE(fingerprint(link + '/'), before);
}

TEST_F(FolderFingerprintTest, aFolderThatIsGoneDiffersFromAnEmptyOne)
{
    auto const empty = folder.folder("empty");
    EXPECT_NE(fingerprint(empty + '/'), fingerprint(folder.path("none") + '/'));
}

TEST(FolderFingerprintTextTest, thePosixCommandIsThis)
{
    EXPECT_EQ(FolderFingerprint::posix("/srv/a b"), "ls -lanA -- '/srv/a b' 2>/dev/null | cksum");
}

TEST(FolderFingerprintTextTest, aWindowsPathIsQuotedAndHasNoSlashBeforeItsDrive)
{
    EXPECT_THAT(FolderFingerprint::windows("/C:/it's"), HasSubstr("; Get-ChildItem -LiteralPath 'C:/it''s' -Force "));
    EXPECT_THAT(FolderFingerprint::windows("/"), HasSubstr(" -LiteralPath '' "));
}

} // namespace
} // namespace tw::test
