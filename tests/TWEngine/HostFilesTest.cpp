#include "TWEngine/SSH/HostFiles.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWCore/Shell/MoveCommand.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "tests/support/FakeCommandHost.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using Existing = FileSystemWriter::Existing;
using namespace std::chrono_literals;

class HostFilesTest : public testing::Test {
protected:
    /// Runs an operation to its end, with `result` as that of its one command.
    template <class T>
    T answer(Task<T> operation, CommandResult result = {})
    {
        auto const before = host->runs.size();
        auto const running = loop.start(std::move(operation));
        loop.runUntil([&] { return host->runs.size() > before; });
        host->runs.back().answer->succeed(std::move(result));
        loop.runUntil([&] { return running.isDone(); });
        return running.value();
    }

    /// The command that an operation sends.
    template <class T>
    HostCommand commandOf(Task<T> operation)
    {
        answer(std::move(operation));
        return host->runs.back().command;
    }

    /// What an operation fails with if its command ends like this.
    std::string failureFor(Task<void> operation, CommandResult result)
    {
        try {
            answer(std::move(operation), std::move(result));
        } catch (FileOperationError const &failure) {
            return failure.what();
        }
        return "it succeeded";
    }

    EngineRuntime engine;
    TestLoop loop;
    std::shared_ptr<FakeCommandHost> host = std::make_shared<FakeCommandHost>();
};

TEST_F(HostFilesTest, aChangeRunsInTheWorkSessionAndIsMarkedAsOne)
{
    auto const command = commandOf(HostFiles::makeDirectory(host, "/srv/new"));
    EXPECT_EQ(command.text, "mkdir '/srv/new'");
    EXPECT_EQ(command.session, CommandSession::work);
    EXPECT_EQ(command.effect, CommandEffect::changes);
}

TEST_F(HostFilesTest, deletingRenamingAndCopyingAreChanges)
{
    auto const deleting = commandOf(HostFiles::remove(engine, host, {"/a", "/b"}));
    EXPECT_THAT(deleting.text, testing::HasSubstr("\nrm -rf -- '/a' '/b'\n"));
    EXPECT_EQ(deleting.effect, CommandEffect::changes);
    auto const renaming = commandOf(HostFiles::moveAll(host, {{"/a", "/b"}}, Existing::stays));
    EXPECT_THAT(renaming.text, testing::EndsWith("tw_as '/a' '/b'\n"));
    EXPECT_EQ(renaming.effect, CommandEffect::changes);
    auto const copying = commandOf(HostFiles::copy(host, {"/a"}, "/b"));
    EXPECT_EQ(copying.text, FileCommands::copy(ShellDialect::posix, std::vector<std::string>{"/a"}, "/b"));
    EXPECT_EQ(copying.effect, CommandEffect::changes);
}

TEST_F(HostFilesTest, aMoveThatLeadsToAnotherFileSystemIsForTheCallerToCopy)
{
    try {
        answer(HostFiles::moveAll(host, {{"/a/x", "/b/x"}, {"/a/y", "/c/y"}}, Existing::stays),
               {.output = "another file system\n1\n", .status = MoveCommand::otherFileSystem});
        FAIL() << "it has moved";
    } catch (FileOperationError::OtherFileSystem const &failure) {
        EXPECT_EQ(failure.path, "/a/y");
    }
}

TEST_F(HostFilesTest, measuringChangesNothingAndIgnoresTheStatus)
{
    EXPECT_EQ(answer(HostFiles::totalSize(host, {"/a"}), {.output = "3\n", .status = 1}), 3072);
    auto const &command = host->runs.back().command;
    EXPECT_EQ(command.session, CommandSession::longWork);
    EXPECT_EQ(command.effect, CommandEffect::none);
    EXPECT_EQ(command.limit, 120s);
}

TEST_F(HostFilesTest, aWindowsHostIsAskedInItsOwnLanguage)
{
    host->speaks = ShellDialect::powershell;
    EXPECT_EQ(commandOf(HostFiles::remove(engine, host, {"/C:/a"})).text,
              "Remove-Item -LiteralPath 'C:/a' -Recurse -Force -ErrorAction Stop");
}

TEST_F(HostFilesTest, anEmptyListSendsNothing)
{
    loop.run(HostFiles::remove(engine, host, {}));
    loop.run(HostFiles::moveAll(host, {}, Existing::stays));
    loop.run(HostFiles::copy(host, {}, "/b"));
    EXPECT_EQ(loop.run(HostFiles::totalSize(host, {})), 0);
    EXPECT_TRUE(host->runs.empty());
}

TEST_F(HostFilesTest, aLongListIsSentInSeveralCommandsUntilOneFails)
{
    auto const deleting =
        loop.start(HostFiles::remove(engine, host, std::vector<std::string>(5, std::string(900'000, 'x'))));
    for (std::size_t count = 1; count <= 2; ++count) {
        loop.runUntil([&] { return host->runs.size() == count; });
        host->runs.back().answer->succeed({.output = "no", .status = count == 2 ? 1 : 0});
    }
    loop.runUntil([&] { return deleting.isDone(); });
    EXPECT_THROW(deleting.value(), FileOperationError::Failed);
    EXPECT_EQ(host->runs.size(), 2U);
}

TEST_F(HostFilesTest, aFailureHasTheWordsOfTheHost)
{
    EXPECT_EQ(failureFor(HostFiles::makeDirectory(host, "/x"), {.output = "mkdir: File exists\n", .status = 1}),
              "create folder failed on /x: mkdir: File exists");
    EXPECT_EQ(failureFor(HostFiles::moveAll(host, {{"/w", "/z"}, {"/x", "/y"}}, Existing::stays),
                         {.output = "mv: no\n1\n", .status = 1}),
              "rename failed on /x: mv: no");
    EXPECT_EQ(failureFor(HostFiles::copy(host, {"/x", "/y"}, "/z"), {.output = "cp: no", .status = 1}),
              "copy failed on /x: cp: no");
}

TEST_F(HostFilesTest, aPersonWaitsForTheFactsAboutAFolder)
{
    auto const asking = loop.start(HostFiles::factsAbout(host, "/srv", {"a"}));
    loop.runUntil([&] { return !host->runs.empty(); });
    EXPECT_EQ(host->runs.front().command.session, CommandSession::interactive);
    EXPECT_EQ(host->runs.front().command.effect, CommandEffect::none);
    host->runs.front().answer->succeed({.output = "folder\n2f7372760a\n1:2 \ntwo\ntaken 0\n1:3 81a4 5 6\n.\n"});
    loop.runUntil([&] { return asking.isDone(); });
    EXPECT_EQ(asking.value().realPath, "/srv");
    ASSERT_EQ(asking.value().taken.size(), 1U);
    EXPECT_EQ(asking.value().taken[0].name, "a");
}

TEST_F(HostFilesTest, moreNamesThanARequestTakesAreAskedAboutInSeveral)
{
    std::vector<std::string> const names(5, std::string(900'000, 'x'));
    auto const asking = loop.start(HostFiles::factsAbout(host, "/srv", names));
    for (std::size_t count = 1; count <= 3; ++count) {
        loop.runUntil([&] { return host->runs.size() == count; });
        host->runs.back().answer->succeed({.output = "folder\n2f0a\n\ntwo\ntaken 0\n- 8000 5 6\n.\n"});
    }
    loop.runUntil([&] { return asking.isDone(); });
    EXPECT_EQ(asking.value().taken.size(), 3U);
}

TEST_F(HostFilesTest, aQuestionThatFailsIsNoAnswer)
{
    for (auto const &result : {CommandResult{.output = "cd: Permission denied\n", .status = 1},
                               CommandResult{.output = "folder\n2f0a\n", .status = 0}}) {
        auto const asking = loop.start(HostFiles::factsAbout(host, "/srv", {}));
        auto const before = host->runs.size();
        loop.runUntil([&] { return host->runs.size() > before; });
        host->runs.back().answer->succeed(result);
        loop.runUntil([&] { return asking.isDone(); });
        EXPECT_THROW(asking.value(), FileOperationError::Failed);
    }
}

/// A change over which the connection is lost, and the host's answer to the question afterwards.
class LostHostFilesTest : public HostFilesTest {
protected:
    /// Nothing if the change succeeds.
    std::string failureOf(Task<void> change, std::vector<CommandResult> const &answers)
    {
        auto const sent = host->runs.size();
        auto const changing = loop.start(std::move(change));
        loop.runUntil([&] { return host->runs.size() > sent; });
        host->runs.back().answer->fail(std::make_exception_ptr(RemoteShellError::OutcomeUnknown("box")));
        for (auto const &answer : answers) {
            auto const before = host->runs.size();
            loop.runUntil([&] { return host->runs.size() > before; });
            host->runs.back().answer->succeed(answer);
        }
        loop.runUntil([&] { return changing.isDone(); });
        try {
            changing.value();
        } catch (FileOperationError const &failure) {
            return failure.what();
        }
        return "";
    }

    static CommandResult taken(std::string const &numbers, std::string const &mode = "81a4")
    {
        auto answer = "folder\n2f0a\n1:2 \ntwo\ntaken" + numbers + "\n";
        for (auto const byte : numbers)
            answer += byte == ' ' ? "1:3 " + mode + " 5 6\n" : "";
        return {.output = answer + ".\n"};
    }
};

TEST_F(LostHostFilesTest, aFolderThatIsThereWasMade)
{
    EXPECT_EQ(failureOf(HostFiles::makeDirectory(host, "/srv/new"), {taken(" 0", "41ed")}), "");
}

TEST_F(LostHostFilesTest, aFileOfItsNameIsNotTheFolder)
{
    EXPECT_EQ(failureOf(HostFiles::makeDirectory(host, "/srv/new"), {taken(" 0")}),
              "create folder failed on /srv/new: the connection was lost before the folder was made");
}

TEST_F(LostHostFilesTest, aFolderThatIsNotThereWasNotMade)
{
    EXPECT_EQ(failureOf(HostFiles::makeDirectory(host, "/srv/new"), {taken("")}),
              "create folder failed on /srv/new: the connection was lost before the folder was made");
}

TEST_F(LostHostFilesTest, whatIsGoneWasDeleted)
{
    EXPECT_EQ(failureOf(HostFiles::remove(engine, host, {"/a/x", "/b/y"}), {taken(""), {.output = "none\n"}}), "");
}

TEST_F(LostHostFilesTest, whatIsStillThereWasNotDeleted)
{
    EXPECT_EQ(failureOf(HostFiles::remove(engine, host, {"/a/x", "/a/y", "/a/z"}), {taken(" 1 2")}),
              "delete failed on /a/y: the connection was lost, and 2 of 3 were still there afterwards");
}

TEST_F(LostHostFilesTest, whatHasLeftItsPlaceAndIsAtTheOtherHasMoved)
{
    EXPECT_EQ(failureOf(HostFiles::moveAll(host, {{"/a/x", "/b/x"}}, Existing::stays), {taken(""), taken(" 0")}), "");
}

TEST_F(LostHostFilesTest, ofAChangeOfCaseTheListedSpellingDecides)
{
    auto const oneName = taken(" 0 1");
    EXPECT_EQ(failureOf(HostFiles::moveAll(host, {{"/a/x", "/a/X"}}, Existing::stays),
                        {oneName, {.output = {}, .status = 0}}),
              "");
    EXPECT_EQ(failureOf(HostFiles::moveAll(host, {{"/a/x", "/a/X"}}, Existing::stays),
                        {oneName, {.output = {}, .status = 1}}),
              "rename failed on /a/x: the connection was lost before it was moved");
}

TEST_F(LostHostFilesTest, theFirstThatHasNotMovedIsNamed)
{
    EXPECT_EQ(failureOf(HostFiles::moveAll(host, {{"/a/x", "/b/x"}, {"/a/y", "/b/y"}}, Existing::stays),
                        {taken(" 1"), taken(" 0")}),
              "rename failed on /a/y: the connection was lost before it was moved");
}

TEST_F(LostHostFilesTest, aHostThatCannotBeAskedLeavesTheOutcomeUnknown)
{
    auto const changing = loop.start(HostFiles::makeDirectory(host, "/srv/new"));
    loop.runUntil([&] { return host->runs.size() == 1; });
    host->runs.back().answer->fail(std::make_exception_ptr(RemoteShellError::OutcomeUnknown("box")));
    loop.runUntil([&] { return host->runs.size() == 2; });
    host->runs.back().answer->fail(std::make_exception_ptr(RemoteShellError::NotConnected()));
    loop.runUntil([&] { return changing.isDone(); });
    EXPECT_THROW(changing.value(), RemoteShellError::OutcomeUnknown);
}

TEST_F(HostFilesTest, aDeletionWhoseAnswerCrossesItsEndLeavesNothing)
{
    auto deleting = loop.start(HostFiles::remove(engine, host, {"/a"}));
    loop.runUntil([&] { return host->runs.size() == 1; });
    deleting.stop();
    loop.runUntil([&] { return host->runs.size() == 2; });
    host->runs[0].answer->succeed({});
    host->runs[1].answer->succeed({.output = {}, .status = 1});
    loop.runUntil([&] { return host->runs.size() == 3; });
    EXPECT_THAT(host->runs[2].command.text, testing::StartsWith("rm -f "));
    host->runs[2].answer->succeed({});
    loop.runUntil([&] { return deleting.isDone(); });
    EXPECT_THROW(deleting.value(), Cancelled);
}

TEST_F(HostFilesTest, aFailureWithoutWordsHasItsStatus)
{
    EXPECT_EQ(failureFor(HostFiles::remove(engine, host, {"/x/y", "/z"}), {.output = " \n", .status = 1}),
              "delete failed on /x/y: exit 1");
}

} // namespace
} // namespace tw::test
