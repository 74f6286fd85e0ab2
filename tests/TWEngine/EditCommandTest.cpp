#include "TWCore/Shell/EditCommand.h"

#include "tests/support/DiskRows.h"
#include "tests/support/EditCutTest.h"
#include "tests/support/HostShell.h"

#include <gmock/gmock.h>

#include <fstream>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace tw::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::UnorderedElementsAre;
using EditKind = EditCommand::Outcome::Kind;
using EditWay = EditCommand::Way;

class EditCommandTest : public HostShellTest {
protected:
    EditCommand::State stateOf(std::string const &path)
    {
        auto const answer = run(EditCommand::question(ShellDialect::posix, path));
        auto const state = EditCommand::state(answer.output);
        if (!state)
            throw std::runtime_error("no answer: " + answer.output);
        return *state;
    }

    static EditCommand::Replacement over(std::string const &path, EditCommand::State const &state)
    {
        return {.path = path, .token = "0123abcd", .expected = state.version, .mode = state.mode};
    }

    EditCommand::Outcome replace(EditCommand::Replacement const &wanted, std::string_view content)
    {
        return EditCommand::outcome(run(EditCommand::replace(wanted, content)).output);
    }

    EditCommand::Outcome replace(std::string const &path, std::string_view content)
    {
        return replace(over(path, stateOf(path)), content);
    }

    static struct stat statusOf(std::string const &path)
    {
        struct stat status{};
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status;
    }

    /// A new file takes the place of the old one, with its mode, and nothing else is left.
    void expectReplaced()
    {
        auto const path = folder.file("it's a\nfile", "old");
        ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
        auto const before = statusOf(path);
        std::string every;
        for (int byte = 0; byte < 256; ++byte)
            every += static_cast<char>(byte);
        every += "%s \\n 'quoted' -- \xf0\x9f\x90\xa6\n";
        auto const done = replace(path, every);
        EXPECT_EQ(done.kind, EditKind::replaced) << done.words;
        EXPECT_EQ(contentOf(path), every);
        EXPECT_NE(statusOf(path).st_ino, before.st_ino);
        EXPECT_EQ(statusOf(path).st_mode, before.st_mode);
        EXPECT_EQ(done.state, stateOf(path));
        EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("it's a\nfile"));
    }
};

TEST_F(EditCommandTest, aFileIsReplacedInOneStepWithItsMode)
{
    expectReplaced();
    useStatOfBSD();
    expectReplaced();
}

TEST_F(EditCommandTest, busyboxReplacesToo)
{
    useBusybox();
    auto const path = folder.file("a", "old");
    EXPECT_EQ(replace(path, "new").kind, EditKind::replaced);
    EXPECT_EQ(contentOf(path), "new");
}

TEST_F(EditCommandTest, aHostWithoutStatIsWrittenInPlace)
{
    replaceTool("stat", "exit 127");
    auto const path = folder.file("a", "old");
    EXPECT_EQ(stateOf(path).way, EditWay::copy);
    EXPECT_EQ(replace(path, "other").kind, EditKind::replaced);
    EXPECT_EQ(contentOf(path), "other");
}

TEST_F(EditCommandTest, whatSomebodyElseHasChangedIsLeftAlone)
{
    auto const path = folder.file("a", "old");
    auto const fetched = stateOf(path);
    folder.file("a", "theirs");
    auto const answer = replace(over(path, fetched), "mine");
    EXPECT_EQ(answer.kind, EditKind::changed);
    EXPECT_EQ(answer.state, stateOf(path));
    EXPECT_EQ(contentOf(path), "theirs");
    EXPECT_EQ(replace(over(path, fetched), "theirs").kind, EditKind::same) << "an upload whose answer was lost";
    EXPECT_EQ(replace(over(path, answer.state), "mine").kind, EditKind::replaced) << "the version that was agreed to";
    EXPECT_EQ(contentOf(path), "mine");

    ASSERT_EQ(::unlink(path.c_str()), 0);
    auto const gone = replace(over(path, fetched), "mine");
    EXPECT_EQ(gone.kind, EditKind::changed);
    EXPECT_EQ(gone.state.version, "");
    EXPECT_THAT(namesOnDisk(folder.path()), testing::IsEmpty());
}

TEST_F(EditCommandTest, aFileThatIsNotThereIsMadeWithTheModeThatItHad)
{
    auto const path = folder.path("a");
    EXPECT_EQ(replace({.path = path, .token = "ab", .expected = "", .mode = "640"}, "new").kind, EditKind::replaced);
    EXPECT_EQ(statusOf(path).st_mode & 07777U, 0640U);
    EXPECT_EQ(replace({.path = path, .token = "ab", .expected = "", .mode = "640"}, "newer").kind, EditKind::changed);
    EXPECT_EQ(contentOf(path), "new");
    EXPECT_EQ(replace({.path = folder.path("b"), .token = "ab", .expected = "", .mode = ""}, "secret").kind,
              EditKind::replaced);
    EXPECT_EQ(statusOf(folder.path("b")).st_mode & 07777U, 0600U);
}

TEST_F(EditCommandTest, aLinkStaysAndItsTargetIsReplaced)
{
    auto const target = folder.file("target", "old");
    auto const link = folder.link("link", "target");
    EXPECT_EQ(replace(link, "new").kind, EditKind::replaced);
    EXPECT_EQ(contentOf(target), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_F(EditCommandTest, extendedAttributesStay)
{
    auto const path = folder.file("a", "old");
    auto const isPossible = ::setxattr(path.c_str(), "user.tarnwick", "kept", 4, 0) == 0;
    auto const before = statusOf(path).st_ino;
    EXPECT_EQ(replace(path, "new").kind, EditKind::replaced);
    EXPECT_EQ(contentOf(path), "new");
    EXPECT_NE(statusOf(path).st_ino, before);
    char value[8];
    EXPECT_EQ(::getxattr(path.c_str(), "user.tarnwick", value, sizeof value), isPossible ? 4 : -1);
}

TEST_F(EditCommandTest, attributesThatANewFileCannotGetAreKeptByWritingInPlace)
{
    struct Case {
        std::string words;
        bool isReplaced;
    };

    for (auto const &[words, isReplaced] :
         {Case{"cp: setting attribute 'user.a' for 'new': Operation not permitted", false},
          Case{"cp: unrecognized option: attributes-only", true},
          Case{"cp: cannot preserve extended attributes, cp is built without xattr support", true}}) {
        auto const path = folder.file("a", "old");
        replaceTool("cp", "echo \"" + words + "\" >&2; exit 1");
        auto const before = statusOf(path).st_ino;
        auto const done = replace(path, "new");
        EXPECT_EQ(done.kind, EditKind::replaced) << words;
        EXPECT_EQ(contentOf(path), "new");
        EXPECT_EQ(statusOf(path).st_ino != before, isReplaced) << words;
        EXPECT_EQ(done.state.way, isReplaced ? EditWay::rename : EditWay::copy);
    }
}

TEST_F(EditCommandTest, aLabelOfSELinuxStays)
{
    auto const path = folder.file("a", "old");
    replaceTool("ls", "/bin/ls \"$@\" | sed 's/^-........./&./'"); // a stand-in: no kernel with labels runs here
    for (auto const isPossible : {true, false}) {
        auto const before = statusOf(path).st_ino;
        replaceTool("chcon", isPossible ? "exit 0" : "exit 1");
        EXPECT_EQ(replace(path, "new").kind, EditKind::replaced);
        EXPECT_EQ(statusOf(path).st_ino != before, isPossible);
    }
}

/// A full disk: 64 KiB, which only the request sees. The file has "o" 20,000 times there.
struct OnFullDisk {
    std::string output;
    std::string files; ///< on the disk afterwards
    std::string content;
};

class EditOnFullDiskTest : public EditCommandTest {
protected:
    OnFullDisk replaceOnFullDisk(std::size_t bytes, std::string const &preparation)
    {
        auto const disk = folder.folder("disk");
        auto const request = EditCommand::replace(
            {.path = disk + "/a", .token = "0123abcd", .expected = "VERSION", .mode = ""}, std::string(bytes, 'n'));
        folder.file("request", request);
        folder.file("inside", "mount -t tmpfs -o size=64k none " + disk + " && cd " + disk +
                                  "\nhead -c 20000 /dev/zero | tr '\\0' o >a; " + preparation +
                                  "\nrequest=$(cat ../request); version=$(stat -c '%i %s %y' a)\n"
                                  "(eval \"${request/VERSION/$version}\") >../output 2>&1\n"
                                  "cat a >../content; ls -A >../files\n");
        auto const done = run("unshare --user --map-root-user --mount bash " + folder.path("inside"));
        EXPECT_EQ(done.status, 0) << done.output;
        return {.output = contentOf(folder.path("output")),
                .files = contentOf(folder.path("files")),
                .content = contentOf(folder.path("content"))};
    }
};

TEST_F(EditOnFullDiskTest, theFileIsOldOrNewAndNothingIsLeft)
{
    struct Case {
        std::size_t bytes;
        std::string preparation;
        EditKind kind;
        EditWay way;
    };

    for (auto const &[bytes, preparation, kind, way] : {
             Case{30'000, "", EditKind::replaced, EditWay::rename}, Case{60'000, "", EditKind::failed, EditWay::rename},
             Case{22'000, "ln a b", EditKind::replaced, EditWay::copy},
             Case{40'000, "ln a b", EditKind::failed, EditWay::copy}, // there is room for it once, but not twice
         }) {
        auto const found = replaceOnFullDisk(bytes, preparation);
        auto const outcome = EditCommand::outcome(found.output);
        EXPECT_EQ(outcome.kind, kind) << bytes << ": " << found.output;
        EXPECT_EQ(outcome.state.way, way);
        if (kind == EditKind::failed)
            EXPECT_THAT(outcome.words, HasSubstr("No space left on device"));
        EXPECT_TRUE(found.content == (kind == EditKind::replaced ? std::string(bytes, 'n') : std::string(20'000, 'o')));
        EXPECT_EQ(found.files, preparation.empty() ? "a\n" : "a\nb\n");
    }
}

TEST_F(EditCommandTest, aFileWithAnotherNameIsWrittenInPlace)
{
    auto const path = folder.file("a", "old");
    ASSERT_EQ(::link(path.c_str(), folder.path("b").c_str()), 0);
    EXPECT_EQ(stateOf(path).way, EditWay::copy);
    EXPECT_EQ(replace(path, "new").kind, EditKind::replaced);
    EXPECT_EQ(contentOf(folder.path("b")), "new");
    EXPECT_THAT(namesOnDisk(folder.path()), UnorderedElementsAre("a", "b"));
}

TEST_F(EditCommandTest, whatStandsInTheWayIsSaidAndLeavesTheFileWhole)
{
    auto const path = folder.file("a", "old");
    replaceTool("mkdir", "echo 'mkdir: no room' >&2; exit 1");
    EXPECT_THAT(replace(path, "new").words, HasSubstr("no folder can be made"));
    EXPECT_EQ(contentOf(path), "old");
    replaceTool("mv", "echo 'mv: refused' >&2; exit 1");
    replaceTool("mkdir", "exec /bin/mkdir \"$@\"");
    EXPECT_EQ(replace(path, "new").kind, EditKind::replaced) << "written in place then";
    EXPECT_EQ(contentOf(path), "new");
    auto const noFile = folder.folder("b");
    auto const refused = replace(noFile, "new");
    EXPECT_EQ(refused.kind, EditKind::failed);
    EXPECT_THAT(refused.words, HasSubstr("it is no file"));
}

TEST_F(EditCommandTest, aContentThatComesInAnotherWayIsStagedPrivately)
{
    auto const path = folder.file("a\xff b", "old");
    auto const wanted = over(path, stateOf(path));
    auto const staged = EditCommand::stagedFile(run(EditCommand::stage(wanted)).output);
    ASSERT_TRUE(staged);
    EXPECT_EQ(statusOf(staged->substr(0, staged->rfind('/'))).st_mode & 07777U, 0700U);
    std::ofstream(*staged) << "new";
    auto const done =
        EditCommand::outcome(run(EditCommand::replaceWithStaged(ShellDialect::posix, wanted, *staged)).output);
    EXPECT_EQ(done.kind, EditKind::replaced) << done.words;
    EXPECT_EQ(contentOf(path), "new");
    auto const second = EditCommand::stagedFile(run(EditCommand::stage(wanted)).output);
    ASSERT_TRUE(second);
    run(EditCommand::dropStaged(ShellDialect::posix, *second));
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("a\xff b"));
}

TEST(EditCommandAnswerTest, whatIsNoAnswerIsAFailureWithItsWords)
{
    EXPECT_EQ(EditCommand::outcome("bash: no\n").words, "bash: no");
    EXPECT_EQ(EditCommand::outcome("a|b|c\n").kind, EditKind::failed);
    EXPECT_EQ(EditCommand::outcome("noise\nreplaced|1 2 3|644|rename\n").words, "noise");
    EXPECT_EQ(EditCommand::state("changed|1|644|rename\n"), std::nullopt);
    EXPECT_EQ(EditCommand::state("state|5 7||copy\r\n"),
              (EditCommand::State{.version = "5 7", .mode = "", .way = EditWay::copy}));
    EXPECT_EQ(EditCommand::stagedFile("staged 2f61\n"), "/a");
    for (auto const *const output : {"", "staged \n", "staged 2f6\n", "staged 61\n", "staged zz\n"})
        EXPECT_EQ(EditCommand::stagedFile(output), std::nullopt) << output;
}

/// As text only: no Windows runs here.
TEST(EditCommandAnswerTest, windowsComparesAndReplacesInOneRequest)
{
    auto const dialect = ShellDialect::powershell;
    EXPECT_THAT(EditCommand::question(dialect, "/C:/a b"), AllOf(HasSubstr("$p='C:/a b'"), EndsWith("tw_say state\n")));
    EditCommand::Replacement const wanted{.path = "/C:/it's", .token = "0123", .expected = "3 42", .mode = ""};
    auto const staged = EditCommand::stagedOnWindows(wanted);
    EXPECT_EQ(staged, "/C:/it's.tw-edit-0123");
    auto const request = EditCommand::replaceWithStaged(dialect, wanted, staged);
    EXPECT_THAT(request, AllOf(HasSubstr("$p='C:/it''s'"), HasSubstr("$e='3 42'\n"),
                               HasSubstr("$s='C:/it''s.tw-edit-0123'\n"), HasSubstr("[IO.File]::Replace($s,")));
    EXPECT_LT(request.find("-ne $e"), request.find("[IO.File]::Replace(")) << "the version is compared first";
    EXPECT_EQ(EditCommand::dropStaged(dialect, staged),
              "Remove-Item -LiteralPath 'C:/it''s.tw-edit-0123' -Force -ErrorAction SilentlyContinue");
}

constexpr std::size_t cutPlaces = 6;

TEST_F(EditCutTest, aSmallFileIsWholeWhereverTheLineIsCut)
{
    constexpr std::size_t bytes = 3000;
    expectWholeAfterEveryCut({.bytes = bytes, .cut = "session", .places = cutPlaces, .most = 2 * bytes});
}

TEST_F(EditCutTest, aLargeFileIsWholeWhereverTheLineIsCut)
{
    constexpr auto bytes = 4 * EditCommand::mostContentInRequest;
    expectWholeAfterEveryCut({.bytes = bytes, .cut = "upload", .places = cutPlaces, .most = bytes});
}

} // namespace
} // namespace tw::test
