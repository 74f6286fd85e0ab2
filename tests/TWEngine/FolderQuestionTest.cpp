#include "TWCore/Shell/FolderQuestion.h"

#include "tests/support/DiskRows.h"
#include "tests/support/HostShell.h"

#include <gmock/gmock.h>

#include <fcntl.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using enum ShellDialect;
using State = FolderFacts::State;

class FolderQuestionTest : public HostShellTest {
protected:
    FolderFacts ask(std::string const &path, std::vector<std::string> const &names = {})
    {
        auto const answer = run(FolderQuestion::text(posix, path, names));
        auto const facts = FolderQuestion::facts(posix, answer.output, names);
        if (!facts || answer.status != 0)
            throw std::runtime_error("no answer: " + answer.output);
        return *facts;
    }

    static FileIdentity identityOf(std::string const &path)
    {
        struct stat status;
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        return {.device = status.st_dev, .inode = status.st_ino};
    }

    static std::vector<std::string> namesOf(FolderFacts const &facts)
    {
        std::vector<std::string> names;
        for (auto const &taken : facts.taken)
            names.push_back(taken.name);
        return names;
    }

    /// What is there under four names, and nothing under a fifth.
    void expectFour()
    {
        auto const file = folder.file("file", "12345");
        folder.folder("folder");
        folder.link("link", "nowhere");
        folder.file("-", "x");
        timespec const times[2] = {{.tv_sec = -5, .tv_nsec = 0}, {.tv_sec = -5, .tv_nsec = 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
        auto const facts = ask(folder.path(), {"link", "none", "file", "-", "folder"});
        ASSERT_THAT(namesOf(facts), ElementsAre("link", "file", "-", "folder"));
        EXPECT_EQ(facts.taken[0].kind, EntryKind::symlink);
        EXPECT_EQ(facts.taken[1].kind, EntryKind::file);
        EXPECT_EQ(facts.taken[1].size, 5);
        EXPECT_EQ(facts.taken[1].mtime, -5);
        EXPECT_EQ(facts.taken[1].identity, identityOf(file));
        EXPECT_EQ(facts.taken[3].kind, EntryKind::directory);
        EXPECT_EQ(facts.realPath, std::filesystem::canonical(folder.path()));
        EXPECT_EQ(facts.way.front(), identityOf(folder.path()));
        EXPECT_EQ(facts.way.back(), identityOf("/"));
        EXPECT_FALSE(facts.takesCasesForOne);
    }
};

TEST_F(FolderQuestionTest, whatHasANameIsDescribed)
{
    expectFour();
}

TEST_F(FolderQuestionTest, busyboxAnswersTheSame)
{
    useBusybox();
    expectFour();
}

TEST_F(FolderQuestionTest, aHostWithTheStatOfBSDAnswersTheSame)
{
    useStatOfBSD();
    expectFour();
}

TEST_F(FolderQuestionTest, aHostWithoutStatStillSaysWhichNamesAreTaken)
{
    replaceTool("stat", "exit 127");
    folder.file("file", "12345");
    folder.folder("folder");
    auto const facts = ask(folder.path(), {"file", "none", "folder"});
    ASSERT_THAT(namesOf(facts), ElementsAre("file", "folder"));
    EXPECT_EQ(facts.taken[0].kind, EntryKind::file);
    EXPECT_EQ(facts.taken[0].size, 5);
    EXPECT_EQ(facts.taken[0].identity, std::nullopt);
    EXPECT_EQ(facts.taken[1].kind, EntryKind::directory);
    EXPECT_THAT(facts.way, IsEmpty());
}

TEST_F(FolderQuestionTest, aMountPointHasAnotherDevice)
{
    auto const facts = ask("/", {"proc", "usr"});
    ASSERT_THAT(namesOf(facts), ElementsAre("proc", "usr"));
    EXPECT_TRUE(facts.taken[0].isMountPoint);
    EXPECT_FALSE(facts.taken[1].isMountPoint);
}

TEST_F(FolderQuestionTest, namesOfAllBytesAreToldApart)
{
    auto const hostile = hostileNames();
    std::set<std::string> unique(hostile.begin(), hostile.end());
    unique.insert({"-n", "--", "!", "(", "a\n", "a\n\n", "taken 0", ".\n", std::string(255, '\'')});
    std::vector<std::string> const names(unique.begin(), unique.end());
    for (std::size_t index = 0; index < names.size(); index += 2)
        folder.file(names[index], names[index]);
    for (auto const isSmall : {false, true}) {
        if (isSmall)
            useBusybox();
        auto const facts = ask(folder.path(), names);
        ASSERT_THAT(facts.taken, SizeIs((names.size() + 1) / 2));
        for (std::size_t index = 0; index < facts.taken.size(); ++index) {
            EXPECT_EQ(facts.taken[index].name, names[2 * index]);
            EXPECT_EQ(facts.taken[index].size, static_cast<std::int64_t>(names[2 * index].size()));
        }
    }
}

TEST_F(FolderQuestionTest, thousandsOfNamesAreOneRequest)
{
    std::vector<std::string> names;
    for (int index = 0; index < 6000; ++index)
        names.push_back(std::string(200, 'n') + std::to_string(index));
    folder.file(names.front());
    folder.file(names.back());
    EXPECT_THAT(FolderQuestion::fittingFront(posix, names), SizeIs(names.size()));
    EXPECT_THAT(namesOf(ask(folder.path(), names)), ElementsAre(names.front(), names.back()));
}

TEST_F(FolderQuestionTest, anOddFolderIsFoundThroughALink)
{
    auto const odd = folder.folder("-it's\n\xFF\n");
    auto const link = folder.link("link", odd);
    auto const facts = ask(link);
    EXPECT_EQ(facts.realPath, std::filesystem::canonical(odd));
    EXPECT_EQ(facts.way.front(), identityOf(odd));
    EXPECT_EQ(facts.way.at(1), identityOf(folder.path()));
}

TEST_F(FolderQuestionTest, theRootIsItsOwnWay)
{
    auto const facts = ask("/", {"tmp"});
    EXPECT_EQ(facts.realPath, "/");
    EXPECT_THAT(facts.way, ElementsAre(identityOf("/")));
    EXPECT_THAT(namesOf(facts), ElementsAre("tmp"));
}

TEST_F(FolderQuestionTest, whatIsNoFolderIsSaidToBeNone)
{
    EXPECT_EQ(ask(folder.path("none")).state, State::missing);
    EXPECT_EQ(ask(folder.file("file")).state, State::notAFolder);
    EXPECT_EQ(ask(folder.link("dangling", "none")).state, State::notAFolder);
}

TEST_F(FolderQuestionTest, aNameAndALinkToItsOtherCaseAreTwoNames)
{
    folder.link("README", "readme");
    folder.file("readme");
    EXPECT_FALSE(ask(folder.path()).takesCasesForOne);
}

TEST_F(FolderQuestionTest, aFolderThatTakesCasesForOneIsRecognised)
{
    // As on such a file system, both spellings lead to one file.
    auto const file = folder.file("Name");
    ASSERT_EQ(::link(file.c_str(), folder.path("nAME").c_str()), 0);
    EXPECT_TRUE(ask(folder.path()).takesCasesForOne);
}

TEST_F(FolderQuestionTest, ofAnEmptyDiskTheFileSystemTellsWhetherItTakesCasesForOne)
{
    auto const takesCasesForOne = [&](std::string const &kind) {
        auto const stat = "stat() { case $* in '-f -c %T .') " + kind +
                          ";; *' -- ..') echo '99:1 41ed 0 0';; *) command stat \"$@\";; esac; }\n";
        auto const facts =
            FolderQuestion::facts(posix, run(stat + FolderQuestion::text(posix, folder.path(), {})).output, {});
        return facts.value().takesCasesForOne;
    };
    EXPECT_FALSE(takesCasesForOne("echo ext2/ext3"));
    EXPECT_TRUE(takesCasesForOne("echo msdos"));
    EXPECT_TRUE(takesCasesForOne("false")) << "a host that does not say";
}

TEST(FolderQuestionAnswerTest, anAnswerThatIsCutIsNone)
{
    std::vector<std::string> const names{"a", "b"};
    std::string const whole = "folder\n2f0a\n1:2 \ntwo\ntaken 0 1\n1:3 81a4 5 6\n1:4 41ed 0 7\n.\n";
    ASSERT_TRUE(FolderQuestion::facts(posix, whole, names));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(FolderQuestion::facts(posix, whole.substr(0, size), names)) << size;
}

TEST(FolderQuestionAnswerTest, anAnswerAboutOtherNamesIsNone)
{
    std::vector<std::string> const names{"a"};
    for (auto const *rows : {"taken 1\n1:3 81a4 5 6\n.\n", "taken x\n.\n", "taken 99999999999999999999\n.\n"})
        EXPECT_FALSE(FolderQuestion::facts(posix, std::string("folder\n2f0a\n\ntwo\n") + rows, names)) << rows;
    EXPECT_FALSE(FolderQuestion::facts(posix, "Permission denied\n", names));
}

TEST(FolderQuestionAnswerTest, aFileThatVanishesMeanwhileLeavesItsNameTaken)
{
    std::vector<std::string> const names{"a", "b"};
    auto const facts = FolderQuestion::facts(posix, "folder\n2f0a\n1:2 \ntwo\ntaken 0 1\n1:4 41ed 0 7\n.\n", names);
    ASSERT_TRUE(facts);
    ASSERT_THAT(facts->taken, SizeIs(2));
    EXPECT_EQ(facts->taken[0].kind, EntryKind::unknown);
    EXPECT_EQ(facts->taken[1].kind, EntryKind::unknown);
}

TEST(FolderQuestionAnswerTest, aWindowsHostIsAskedInItsOwnLanguage)
{
    std::vector<std::string> const names{"it's", "b"};
    auto const request = FolderQuestion::text(powershell, "/C:/a b", names);
    EXPECT_TRUE(request.starts_with("$d='C:/a b'\n$names=@('it''s','b')\n")) << request;
    auto const facts = FolderQuestion::facts(
        powershell, "folder\r\n433a2f6120620a\r\n\r\none\r\ntaken 1\r\n- 8000 12 -3\r\n.\r\n", names);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->realPath, "/C:/a b");
    EXPECT_TRUE(facts->takesCasesForOne);
    ASSERT_THAT(facts->taken, SizeIs(1));
    EXPECT_EQ(facts->taken[0].name, "b");
    EXPECT_EQ(facts->taken[0].size, 12);
    EXPECT_EQ(facts->taken[0].mtime, -3);
}

} // namespace
} // namespace tw::test
