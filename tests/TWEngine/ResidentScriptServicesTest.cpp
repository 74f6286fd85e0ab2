#include "TWEngine/Shell/ShellAnswer.h"
#include "TWEngine/Shell/ShellHandshake.h"
#include "tests/support/DiskRows.h"
#include "tests/support/ResidentShellTest.h"

#include <gtest/gtest.h>

#include <random>

#include <sys/stat.h>

namespace tw::test {
namespace {

using enum ShellDialect;
using Frame = ShellReader::Frame;

class ResidentScriptServicesTest : public ResidentShellTest {
protected:
    ResidentScriptServicesTest() { give({"find"}); }

    static Frame run(ResidentShell &resident, std::string_view command)
    {
        return resident.answerTo(ShellRequest::run(posix, command));
    }

    static std::string read(ResidentShell &resident, std::string const &path, std::int64_t offset, std::size_t length)
    {
        auto const frame = resident.answerTo(ShellRequest::read(posix, path, offset, length));
        EXPECT_EQ(frame.status, 0);
        return ShellAnswer::fileBytes(posix, frame.payload);
    }

    static std::int64_t size(ResidentShell &resident, std::string const &path)
    {
        auto const frame = resident.answerTo(ShellRequest::size(posix, path));
        EXPECT_EQ(frame.status, 0);
        return ShellAnswer::fileSize(frame.payload);
    }

    /// What the handshake says of archives, with the tools of now.
    std::string archiveTools()
    {
        ShellHandshake handshake;
        handshake.take(shell().handshake().payload);
        return handshake.archiveTools;
    }
};

std::string randomBytes(std::size_t size)
{
    std::mt19937 random(20261121);
    std::string bytes;
    while (bytes.size() < size)
        bytes += static_cast<char>(random());
    return bytes;
}

TEST_F(ResidentScriptServicesTest, theFirstResponseIsTheHandshake)
{
    auto resident = shell();
    EXPECT_EQ(resident.handshake(), (Frame{0, 0, "gnu\t" + folder.path() + "\tgnutar,no,no", false}));
    EXPECT_EQ(resident.end(), "");
    EXPECT_EQ(loop.run(resident.process().wait()), exited(0));
}

TEST_F(ResidentScriptServicesTest, theStartFolderIsWhereTheShellWasStarted)
{
    for (std::string const name : {"a b", "it's", "\xC3\xA9", "%s", "$(x)"}) {
        ShellHandshake handshake;
        handshake.take(shell(100, folder.folder(name)).handshake().payload);
        EXPECT_EQ(handshake.startDirectory, folder.path(name));
    }
}

TEST_F(ResidentScriptServicesTest, theKindOfTarIsWhatItSaysOfItself)
{
    give("tar", "echo 'bsdtar 3.6.2 - libarchive 3.6.2'");
    EXPECT_EQ(archiveTools(), "bsdtar,no,no");
    give("tar", "echo 'tar (GNU tar) 1.34'; echo bsdtar");
    EXPECT_EQ(archiveTools(), "gnutar,no,no") << "only the first line counts";
    give("tar", "exit 1");
    EXPECT_EQ(archiveTools(), "gnutar,no,no");
}

TEST_F(ResidentScriptServicesTest, aHostHasZipIfItCanPackAndUnpack)
{
    give("zip", "exit 0");
    EXPECT_EQ(archiveTools(), "gnutar,no,no");
    give("unzip", "exit 0");
    EXPECT_EQ(archiveTools(), "gnutar,yes,no");
}

TEST_F(ResidentScriptServicesTest, theSevenZipOfTheMostIsPreferred)
{
    for (auto const *name : {"7za", "7z", "7zz"}) {
        give(name, "exit 0");
        EXPECT_EQ(archiveTools(), "gnutar,no," + std::string(name));
    }
}

TEST_F(ResidentScriptServicesTest, aRangeOfAFileIsItsBytes)
{
    auto const content = randomBytes(300'000) + "@@TWfedcba9876543210:1:0@@\n" + std::string(3, '\0');
    auto const path = folder.file("file", content);
    auto resident = shell();
    EXPECT_EQ(read(resident, path, 0, content.size()), content);
    EXPECT_EQ(read(resident, path, 0, 1), content.substr(0, 1));
    EXPECT_EQ(read(resident, path, 1, 1), content.substr(1, 1));
    EXPECT_EQ(read(resident, path, 65'536, 65'536), content.substr(65'536, 65'536));
    EXPECT_EQ(read(resident, path, 299'999, 1'000'000), content.substr(299'999));
}

TEST_F(ResidentScriptServicesTest, thereIsNothingToReadBehindTheEndOrInNothing)
{
    auto const path = folder.file("file", "12345");
    auto resident = shell();
    EXPECT_EQ(read(resident, path, 5, 10), "");
    EXPECT_EQ(read(resident, path, 6, 10), "");
    EXPECT_EQ(read(resident, path, 1LL << 62, 10), "");
    EXPECT_EQ(read(resident, path, 0, 0), "");
    EXPECT_EQ(read(resident, folder.file("empty"), 0, 10), "");
}

TEST_F(ResidentScriptServicesTest, whatCannotBeReadReadsAsNothing)
{
    auto const closed = folder.file("closed", "secret");
    ASSERT_EQ(chmod(closed.c_str(), 0), 0);
    auto resident = shell();
    for (auto const &path : {closed, folder.path("missing"), folder.path()})
        EXPECT_EQ(read(resident, path, 0, 10), "") << path;
}

TEST_F(ResidentScriptServicesTest, aSizeIsThatOfTheFile)
{
    auto resident = shell();
    EXPECT_EQ(size(resident, folder.file("file", "12345")), 5);
    EXPECT_EQ(size(resident, folder.file("empty")), 0);
    EXPECT_EQ(size(resident, folder.path("missing")), 0);
    auto const large = folder.file("large");
    ASSERT_EQ(truncate(large.c_str(), 5'000'000'000), 0);
    EXPECT_EQ(size(resident, large), 5'000'000'000);
    EXPECT_EQ(size(resident, folder.link("link", "file")), 4) << "of the link itself";
}

TEST_F(ResidentScriptServicesTest, aSizeIsAskedOfTheStatOfBsdInItsOwnWords)
{
    give("stat", R"([ "$1 $2" = "-f %z" ] && echo 7 && exit
echo "stat: illegal option -- c" >&2
exit 1)");
    auto resident = shell();
    EXPECT_EQ(size(resident, "/any"), 7);
}

TEST_F(ResidentScriptServicesTest, filesOfAnyNameAreMeasuredAndRead)
{
    auto resident = shell();
    for (auto const &name : hostileNames()) {
        auto const path = folder.file(name, name);
        EXPECT_EQ(read(resident, path, 0, 1000), name);
        EXPECT_EQ(size(resident, path), std::ssize(name)) << ::testing::PrintToString(name);
    }
}

TEST_F(ResidentScriptServicesTest, aCommandAnswersWithItsOutputsAndItsStatus)
{
    auto resident = shell();
    EXPECT_EQ(run(resident, "echo out; echo error >&2; exit 3"), (Frame{1, 3, "out\nerror\n", false}));
    EXPECT_EQ(run(resident, "true"), (Frame{2, 0, "", false}));
    EXPECT_EQ(run(resident, "missing-command").status, 127);
    EXPECT_NE(run(resident, "missing-command").payload.find("missing-command"), std::string::npos);
    EXPECT_EQ(run(resident, "kill -TERM $BASHPID").status, 128 + SIGTERM);
    EXPECT_NE(run(resident, "(").status, 0) << "what is no command at all fails, and does no more";
    EXPECT_EQ(run(resident, "printf x").payload, "x");
}

TEST_F(ResidentScriptServicesTest, aCommandMayHaveManyLinesAndAnyBytes)
{
    auto resident = shell();
    EXPECT_EQ(run(resident, "for word in a b; do\n  echo \"$word\"\ndone # it's\n").payload, "a\nb\n");
    for (auto const &name : hostileNames())
        EXPECT_EQ(run(resident, "printf %s " + quote(posix, name)).payload, name);
}

TEST_F(ResidentScriptServicesTest, aCommandChangesNothingOfTheSession)
{
    auto resident = shell();
    run(resident, "cd /; TW_MAX=1; PATH=; id=9; tw_list() { :; }; exec 1>/dev/null; set -e; false");
    EXPECT_EQ(run(resident, "printf '%s %s' \"$PWD\" \"$TW_MAX\"").payload, folder.path() + " 8388608");
    folder.file("file");
    EXPECT_FALSE(resident.answerTo(ShellRequest::list(posix, folder.path(), 1)).payload.empty());
}

TEST_F(ResidentScriptServicesTest, aCommandRunsInTheLocaleOfPrograms)
{
    auto resident = shell();
    EXPECT_EQ(run(resident, "printf %s \"$LC_ALL\"").payload, "C");
}

TEST_F(ResidentScriptServicesTest, wordsBehindTheCommandBelongToIt)
{
    auto resident = shell();
    resident.write("tw_run 5 echo a  b\n");
    EXPECT_EQ(resident.nextFrame(), (Frame{5, 0, "a b\n", false}));
}

TEST_F(ResidentScriptServicesTest, aCommandThatReadsItsInputTakesTheLineBehindIt)
{
    auto resident = shell();
    resident.write("tw_run 5 'read -r line; printf %s \"$line\"'\ntw_run 6 'echo lost'\ntw_run 7 'echo on'\n");
    EXPECT_EQ(resident.nextFrame(), (Frame{5, 0, "tw_run 6 'echo lost'", false}));
    EXPECT_EQ(resident.nextFrame(), (Frame{7, 0, "on\n", false}));
}

TEST_F(ResidentScriptServicesTest, aRequestThatIsLostInTheMiddleIsNotRun)
{
    auto const request = ShellRequest::run(posix, "rm -r 'it'\\''s'").numbered(1);
    auto const isRun = [&](std::size_t arrivedBytes) {
        auto const bash = startShell("exec bash -s 2>/dev/null");
        loop.run(bash->write("tw_run() { echo run; }\n" + request.substr(0, arrivedBytes)));
        bash->closeInput();
        auto const output = readAll(bash);
        wait(bash);
        return output == "run\n";
    };
    EXPECT_TRUE(isRun(request.size()));
    for (std::size_t bytes = 0; bytes < request.size() - std::string_view("}\n").size(); ++bytes)
        EXPECT_FALSE(isRun(bytes)) << request.substr(0, bytes);
}

TEST_F(ResidentScriptServicesTest, aResponseOverTheBudgetOfListingsIsWholeAndSaysSo)
{
    auto const content = randomBytes(5000);
    auto const path = folder.file("file", content);
    auto resident = shell(1000);
    auto const frame = resident.answerTo(ShellRequest::read(posix, path, 0, 5000));
    EXPECT_EQ(frame.payload, content);
    EXPECT_TRUE(frame.truncated);
}

} // namespace
} // namespace tw::test
