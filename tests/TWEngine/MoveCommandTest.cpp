#include "TWCore/Shell/MoveCommand.h"

#include "tests/support/DiskRows.h"
#include "tests/support/HostShell.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using enum ShellDialect;
using Move = FileSystemWriter::Move;
using Existing = FileSystemWriter::Existing;

class MoveCommandTest : public HostShellTest {
protected:
    MoveCommandTest()
    {
        folder.folder("from");
        folder.folder("to");
    }

    Move move(std::string const &name) const { return {folder.path("from/" + name), folder.path("to/" + name)}; }

    /// Nothing if the request succeeds.
    std::optional<MoveCommand::Failure> perform(std::vector<Move> const &moves, Existing existing = Existing::stays)
    {
        auto const answer = run(MoveCommand::text(posix, moves, existing));
        if (answer.status == 0)
            return std::nullopt;
        return MoveCommand::failure(answer.output, moves.size());
    }

    static void lock(std::string const &path) { std::filesystem::permissions(path, std::filesystem::perms(0555)); }

    static std::filesystem::perms rightsOf(std::string const &path)
    {
        return std::filesystem::status(path).permissions();
    }

    void expectLockedFoldersToMove()
    {
        dropPrivileges();
        for (auto const *name : {"-n", "a\n", "z"})
            lock(folder.folder(std::string("from/") + name));
        folder.file("from/b");
        folder.link("from/link", folder.path("from/z"));
        EXPECT_FALSE(perform({move("-n"), move("a\n"), move("b"), move("link"), move("z")}));
        EXPECT_FALSE(perform({{folder.path("to/z"), folder.path("renamed")}}));
        EXPECT_THAT(arrived(), ElementsAre("-n", "a\n", "b", "link"));
        for (auto const *path : {"to/-n", "to/a\n", "renamed"})
            EXPECT_EQ(rightsOf(folder.path(path)), std::filesystem::perms(0555)) << path;
    }

    /// "to" is mounted once more, where nobody else sees it.
    void expectAnotherMountToBeSeen()
    {
        folder.file("from/a", "content");
        folder.folder("mount");
        auto const mounted = folder.path("mount");
        for (std::string const target : {"/a", "/b"}) {
            auto const request =
                MoveCommand::text(posix, std::vector<Move>{{folder.path("from/a"), mounted + target}}, Existing::stays);
            auto const script = "/bin/mount --bind " + folder.path("to") + ' ' + mounted + " || exit 9\n" + request;
            auto const answer = run(std::string("/usr/bin/unshare ") + (::geteuid() == 0 ? "-m" : "-rm") +
                                    " /bin/bash -c " + quote(posix, script));
            EXPECT_EQ(answer.status, MoveCommand::otherFileSystem) << answer.output;
        }
        EXPECT_THAT(left(), ElementsAre("a"));
        EXPECT_THAT(arrived(), IsEmpty());
    }

    std::vector<std::string> left() const { return namesOnDisk(folder.path("from")); }

    std::vector<std::string> arrived() const { return namesOnDisk(folder.path("to")); }

    void expectOldFilesToBeReplaced()
    {
        folder.folder("elsewhere");
        for (auto const *name : {"a\n", "-", "-f", "link", "new", "pipe", "taken", "z"})
            folder.file(std::string("from/") + name, "new");
        for (auto const *name : {"a\n", "-", "-f", "z"})
            folder.file(std::string("to/") + name, "old");
        folder.link("to/link", folder.path("elsewhere"));
        ASSERT_EQ(::mkfifo(folder.path("to/pipe").c_str(), 0600), 0);
        folder.folder("to/taken");
        std::vector<Move> const moves{move("a\n"), move("-"),    move("-f"),    move("link"),
                                      move("new"), move("pipe"), move("taken"), move("z")};
        auto const failure = perform(moves, Existing::isReplaced);
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->index, 6U);
        EXPECT_EQ(failure->words, "a folder has the name");
        EXPECT_THAT(left(), ElementsAre("taken", "z"));
        for (auto const *name : {"a\n", "-", "-f", "link", "new", "pipe"})
            EXPECT_EQ(contentOf(folder.path(std::string("to/") + name)), "new") << name;
        EXPECT_EQ(contentOf(folder.path("to/z")), "old");
        EXPECT_FALSE(std::filesystem::is_symlink(folder.path("to/link")));
        EXPECT_THAT(namesOnDisk(folder.path("elsewhere")), IsEmpty());
    }

    void useToolsOfBSD()
    {
        useStatOfBSD();
        replaceTool("mv", R"sh(
[ "$1" != --help ] || { echo "usage: mv [-f | -i | -n] [-hv] source target" >&2; exit 64; }
exec /bin/mv "$@"
)sh");
    }

    void expectHostileNamesToMove()
    {
        auto const hostile = hostileNames();
        std::set<std::string> unique(hostile.begin(), hostile.end());
        unique.insert({"-n", "--", "a\n", "a\n\n", std::string(255, '\'')});
        std::vector<std::string> const names(unique.begin(), unique.end());
        std::vector<Move> moves;
        for (auto const &name : names) {
            folder.file("from/" + name, name);
            moves.push_back(move(name));
        }
        EXPECT_FALSE(perform(moves));
        EXPECT_THAT(left(), IsEmpty());
        for (auto const &name : names)
            EXPECT_EQ(contentOf(folder.path("to/" + name)), name);
        // And back, each with another name.
        std::vector<Move> back;
        for (std::size_t index = 0; index < names.size(); ++index)
            back.push_back({folder.path("to/" + names[index]), folder.path("from/" + std::to_string(index))});
        EXPECT_FALSE(perform(back));
        EXPECT_THAT(arrived(), IsEmpty());
        EXPECT_THAT(left(), SizeIs(names.size()));
    }
};

TEST_F(MoveCommandTest, namesOfAllBytesMove)
{
    expectHostileNamesToMove();
}

TEST_F(MoveCommandTest, namesOfAllBytesMoveWithBusybox)
{
    useBusybox();
    expectHostileNamesToMove();
}

TEST_F(MoveCommandTest, namesOfAllBytesMoveWithTheToolsOfBSD)
{
    useToolsOfBSD();
    expectHostileNamesToMove();
}

TEST_F(MoveCommandTest, oldFilesAreReplaced)
{
    expectOldFilesToBeReplaced();
}

TEST_F(MoveCommandTest, oldFilesAreReplacedWithBusybox)
{
    useBusybox();
    expectOldFilesToBeReplaced();
}

TEST_F(MoveCommandTest, oldFilesAreReplacedWithTheToolsOfBSD)
{
    useToolsOfBSD();
    expectOldFilesToBeReplaced();
}

TEST_F(MoveCommandTest, lockedFoldersMoveAndKeepTheirRights)
{
    expectLockedFoldersToMove();
}

TEST_F(MoveCommandTest, lockedFoldersMoveWithBusybox)
{
    useBusybox();
    expectLockedFoldersToMove();
}

TEST_F(MoveCommandTest, aLockedFolderThatCannotMoveKeepsItsRights)
{
    dropPrivileges();
    lock(folder.folder("from/a"));
    lock(folder.path("to"));
    ASSERT_TRUE(perform({move("a")}));
    EXPECT_EQ(rightsOf(folder.path("from/a")), std::filesystem::perms(0555));
}

TEST_F(MoveCommandTest, aTakenNameStopsAndBothStay)
{
    for (std::string const name : {"a", "b", "c"})
        folder.file("from/" + name, name);
    folder.folder("to/b");
    auto const failure = perform({move("a"), move("b"), move("c")});
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->index, 1U);
    EXPECT_EQ(failure->words, "File exists");
    EXPECT_THAT(left(), ElementsAre("b", "c"));
    EXPECT_THAT(arrived(), ElementsAre("a", "b"));
    EXPECT_THAT(namesOnDisk(folder.path("to/b")), IsEmpty());
}

TEST_F(MoveCommandTest, aMissingNameStops)
{
    folder.file("from/a");
    folder.file("from/c");
    auto const failure = perform({move("a"), move("b"), move("c")});
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->index, 1U);
    EXPECT_EQ(failure->words, "No such file or directory");
    EXPECT_THAT(arrived(), ElementsAre("a"));
}

TEST_F(MoveCommandTest, theFailureIsThatOfTheRequestAndNotOfItsGroup)
{
    auto const first = folder.file("first");
    folder.file("from/a");
    auto const failure = perform({{first, folder.path("renamed")}, move("a"), move("b")});
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->index, 2U);
    EXPECT_TRUE(std::filesystem::exists(folder.path("renamed")));
}

TEST_F(MoveCommandTest, aProgramThatSkipsAFileAndReportsSuccessIsNotBelieved)
{
    replaceTool("mv", "exit 0");
    folder.file("from/a");
    for (auto const &target : {folder.path("to/a"), folder.path("to/b")}) {
        auto const failure = perform({{folder.path("from/a"), target}});
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->words, "it was not moved");
    }
}

TEST_F(MoveCommandTest, aFolderThatAppearsUnderTheTargetsNameIsNoSuccess)
{
    replaceTool("mv", R"sh(
[ "$1" != --help ] || exit 0
for target; do :; done
mkdir -p "$target/a"
exec /bin/mv "$@"
)sh");
    folder.file("from/a");
    for (auto const &target : {folder.path("to/a"), folder.path("to/b")})
        EXPECT_TRUE(perform({{folder.path("from/a"), target}})) << target;
}

TEST_F(MoveCommandTest, aFileThatAppearsUnderTheTargetsNameStaysWithBusybox)
{
    replaceTool("mv", R"sh(
[ "$1" != --help ] || exec busybox mv --help
for target; do :; done
[ ! -d "$target" ] || target=$target/a
echo theirs > "$target"
exec busybox mv "$@"
)sh");
    folder.file("from/a", "ours");
    for (auto const &target : {folder.path("to/a"), folder.path("to/b")}) {
        EXPECT_TRUE(perform({{folder.path("from/a"), target}})) << target;
        EXPECT_EQ(contentOf(target), "theirs\n");
        EXPECT_EQ(contentOf(folder.path("from/a")), "ours");
    }
}

TEST_F(MoveCommandTest, anotherFileUnderTheNewNameIsNoSuccess)
{
    replaceTool("mv", "[ \"$1\" != --help ] || exit 0; echo x > \"$3/a\"; rm -- \"$2\"");
    folder.file("from/a");
    auto const failure = perform({move("a")});
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->words, "another file has taken the name");
}

TEST_F(MoveCommandTest, aDashIsAName)
{
    folder.file("from/-", "content");
    EXPECT_FALSE(perform({move("-")}));
    EXPECT_EQ(contentOf(folder.path("to/-")), "content");
}

TEST_F(MoveCommandTest, whatTheHostSaysIsPassedOn)
{
    replaceTool("mv", "echo 'mv: Permission denied' >&2; exit 1");
    folder.file("from/a");
    EXPECT_EQ(perform({move("a")})->words, "mv: Permission denied");
}

TEST_F(MoveCommandTest, whatLeadsToAnotherFileSystemIsSaidAndStays)
{
    TemporaryFolder const other(anotherFileSystem(folder.path()));
    for (std::string const name : {"a", "b"})
        folder.file("from/" + name, name);
    for (std::string const target : {"b", "c"}) {
        auto const answer = run(
            MoveCommand::text(posix, std::vector<Move>{{folder.path("from/b"), other.path(target)}}, Existing::stays));
        EXPECT_EQ(answer.status, MoveCommand::otherFileSystem) << answer.output;
    }
    EXPECT_THAT(left(), ElementsAre("a", "b"));
    EXPECT_THAT(namesOnDisk(other.path()), IsEmpty());
}

TEST_F(MoveCommandTest, anotherMountOfOneDiskIsAnotherFileSystem)
{
    expectAnotherMountToBeSeen();
}

TEST_F(MoveCommandTest, anotherMountOfOneDiskIsAnotherFileSystemWithBusybox)
{
    useBusybox();
    expectAnotherMountToBeSeen();
}

TEST_F(MoveCommandTest, whatAProgramCopiesAndDeletesHasMoved)
{
    // As mv does where the system refuses to rename within one disk.
    replaceTool("mv", R"sh(
[ "$1" != --help ] || exit 0
for last; do :; done
[ "$1" != -- ] || shift
while [ $# -gt 1 ]; do cp -a -- "$1" "$last" && rm -r -- "$1"; shift; done
)sh");
    folder.file("from/a", "content");
    folder.folder("from/tree");
    for (int index = 0; index < 1000; ++index)
        folder.file("from/tree/" + std::to_string(index));
    EXPECT_FALSE(perform({move("a"), move("tree")}));
    EXPECT_FALSE(perform({{folder.path("to/a"), folder.path("renamed")}}));
    EXPECT_EQ(contentOf(folder.path("renamed")), "content");
    EXPECT_THAT(namesOnDisk(folder.path("to/tree")), SizeIs(1000));
}

TEST_F(MoveCommandTest, theSpellingOfANameIsWhatItsFolderLists)
{
    Move const change{folder.path("from/it's x"), folder.path("from/It's X")};
    auto const isRespelled = [&] { return run(MoveCommand::isRespelled(change)).status == 0; };
    folder.file("from/it's x");
    EXPECT_FALSE(isRespelled());
    folder.file("from/It's X");
    EXPECT_FALSE(isRespelled()) << "both are there";
    std::filesystem::remove(folder.path("from/it's x"));
    EXPECT_TRUE(isRespelled());
}

TEST_F(MoveCommandTest, tenThousandNamesAreAFewRequests)
{
    std::vector<Move> moves;
    for (int index = 0; index < 10'000; ++index)
        moves.push_back({"/srv/data/from/a name of some length " + std::to_string(index),
                         "/srv/data/to/a name of some length " + std::to_string(index)});
    EXPECT_THAT(MoveCommand::fittingFront(posix, moves), SizeIs(moves.size()));
}

TEST(MoveCommandTextTest, aRequestTakesAsManyMovesAsFit)
{
    std::string const deep = "/" + std::string(900'000, 'x');
    std::vector<Move> const moves(3, Move{deep, deep});
    EXPECT_THAT(MoveCommand::fittingFront(posix, moves), SizeIs(1));
    std::vector<Move> const tooLong(2, Move{deep + deep, deep + deep});
    EXPECT_THAT(MoveCommand::fittingFront(posix, tooLong), SizeIs(1));
    EXPECT_THAT(MoveCommand::fittingFront(posix, {}), IsEmpty());
}

TEST(MoveCommandTextTest, onAWindowsHostEachMoveRefusesATargetThatExists)
{
    std::vector<Move> const moves{{"/C:/it's", "/D:/b"}, {"/C:/a", "/C:/A"}};
    EXPECT_EQ(MoveCommand::text(powershell, moves, Existing::stays),
              "$tw=0; try {\n"
              "if(Test-Path -LiteralPath 'D:/b'){ throw 'File exists' }; "
              "Move-Item -LiteralPath 'C:/it''s' -Destination 'D:/b' -Force -ErrorAction Stop; $tw++\n"
              "Move-Item -LiteralPath 'C:/a' -Destination 'C:/A' -Force -ErrorAction Stop; $tw++\n"
              "} catch { throw ($_.Exception.Message + \"`n$tw\") }");
}

TEST(MoveCommandTextTest, onAWindowsHostAFolderIsNotReplaced)
{
    std::vector<Move> const moves{{"/C:/it's", "/D:/b"}};
    EXPECT_EQ(MoveCommand::text(powershell, moves, Existing::isReplaced),
              "$tw=0; try {\n"
              "if(Test-Path -LiteralPath 'D:/b' -PathType Container){ throw 'a folder has the name' }; "
              "if(Test-Path -LiteralPath 'D:/b'){ [IO.File]::Replace('C:/it''s','D:/b',[NullString]::Value) } "
              "else { Move-Item -LiteralPath 'C:/it''s' -Destination 'D:/b' -Force -ErrorAction Stop }; $tw++\n"
              "} catch { throw ($_.Exception.Message + \"`n$tw\") }");
}

TEST(MoveCommandTextTest, theFailureIsReadFromTheLastLine)
{
    auto const failure = MoveCommand::failure("mv: no\nmv: never\n7\n", 10);
    EXPECT_EQ(failure.index, 7U);
    EXPECT_EQ(failure.words, "mv: no\nmv: never");
    for (auto const *output : {"mv: no\n", "12\n", "-1\n", ""})
        EXPECT_EQ(MoveCommand::failure(output, 10).index, 0U) << output;
}

} // namespace
} // namespace tw::test
