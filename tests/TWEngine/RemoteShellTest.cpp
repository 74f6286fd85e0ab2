#include "tests/support/RemoteShellTest.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/ListingParser.h"
#include "tests/support/DiskRows.h"
#include "tests/support/Gate.h"
#include "tests/support/ManualClock.h"

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

Rows rowsIn(ListingResponse const &response, std::string const &root, int depth)
{
    return rowsOf(ListingParser::parse(std::make_shared<std::string const>(response.bytes), root, depth, {},
                                       ListingParser::Completeness::whole),
                  root);
}

TEST_F(RemoteShellTest, theHandshakeTellsOfTheHost)
{
    auto const shell = makeShell();
    EXPECT_FALSE(stateOf(shell).isConnected);
    EXPECT_EQ(stateOf(shell).handshake, ShellHandshake());
    loop.run(shell->connect());

    auto const state = stateOf(shell);
    EXPECT_TRUE(state.isConnected);
    EXPECT_EQ(state.disconnectReason, std::nullopt);
    EXPECT_EQ(state.handshake.implementation, "gnu");
    EXPECT_EQ(state.handshake.startDirectory, std::filesystem::current_path().string());
    EXPECT_THAT(state.handshake.archiveTools, StartsWith("gnutar,"));
}

TEST_F(RemoteShellTest, connectingAConnectedSessionDoesNothing)
{
    auto const shell = connected();
    loop.run(shell->connect());
    EXPECT_THAT(standIn.starts(), SizeIs(1));
}

TEST_F(RemoteShellTest, sshIsCalledAsForASession)
{
    RemoteShellOptions const options{.controlPath = "/nowhere"};
    connected(options);
    EXPECT_THAT(standIn.starts(), ElementsAre(SSHCommandLine::session(options, "host", ShellDialect::posix)));
}

TEST_F(RemoteShellTest, aListingIsWhatIsOnTheDisk)
{
    folder.folder("a/b/c");
    folder.file("a/b/c/file", "content");
    folder.link("link", "a");
    auto const shell = connected();
    for (int const depth : {1, 3}) {
        auto const response = loop.run(shell->list(folder.path(), depth));
        EXPECT_EQ(rowsIn(response, folder.path(), depth), rowsOnDisk(folder.path(), depth));
        EXPECT_EQ(response.status, 0);
        EXPECT_FALSE(response.truncated);
    }
}

TEST_F(RemoteShellTest, aListingIsCutAtTheBudget)
{
    for (int index = 0; index < 100; ++index)
        folder.file("a file with a name of some length " + std::to_string(index));
    auto const shell = connected({.maxResponseBytes = 1000});
    auto const response = loop.run(shell->list(folder.path(), 1));
    EXPECT_EQ(response.bytes.size(), 1000U);
    EXPECT_TRUE(response.truncated);
    EXPECT_EQ(run(shell, "echo on").output, "on\n");
}

TEST_F(RemoteShellTest, anyNameIsThatName)
{
    for (auto const &name : hostileNames()) {
        folder.folder(name);
        folder.file(name + "/file", "the bytes of " + name);
    }
    auto const shell = connected();
    EXPECT_EQ(rowsIn(loop.run(shell->list(folder.path(), 2)), folder.path(), 2), rowsOnDisk(folder.path(), 2));
    for (auto const &name : hostileNames()) {
        auto const inside = folder.path(name);
        EXPECT_EQ(rowsIn(loop.run(shell->list(inside, 1)), inside, 1), rowsOnDisk(inside, 1));
        auto const file = inside + "/file";
        EXPECT_EQ(loop.run(shell->readChunk(file, 0, 10'000)), "the bytes of " + name);
        EXPECT_EQ(loop.run(shell->fileSize(file)), std::ssize("the bytes of " + name));
    }
}

TEST_F(RemoteShellTest, aPartOfAFileIsItsBytes)
{
    std::string bytes;
    for (int index = 0; index < 200'000; ++index)
        bytes += static_cast<char>(index * 7 + index / 256);
    auto const path = folder.file("file", bytes);
    auto const shell = connected();
    EXPECT_EQ(loop.run(shell->readChunk(path, 0, bytes.size() * 2)), bytes);
    EXPECT_EQ(loop.run(shell->readChunk(path, 70'000, 100'000)), bytes.substr(70'000, 100'000));
    EXPECT_EQ(loop.run(shell->readChunk(path, std::ssize(bytes), 1)), "");
    EXPECT_EQ(loop.run(shell->readChunk(path, 0, 0)), "");
}

TEST_F(RemoteShellTest, aFileThatIsNotThereHasNoBytes)
{
    auto const shell = connected();
    EXPECT_EQ(loop.run(shell->fileSize(folder.path("none"))), 0);
    EXPECT_EQ(loop.run(shell->readChunk(folder.path("none"), 0, 10)), "");
    EXPECT_EQ(loop.run(shell->list(folder.path("none"), 1)).bytes, "");
}

TEST_F(RemoteShellTest, aCommandAnswersWhatItPrintsAndHowItEnds)
{
    auto const shell = connected();
    auto const result = run(shell, "echo out; echo err >&2; printf '\\377'; cd /; exit 3");
    EXPECT_EQ(result.output, "out\nerr\n\xEF\xBF\xBD");
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(run(shell, "pwd").output, std::filesystem::current_path().string() + '\n');
}

TEST_F(RemoteShellTest, answersFindTheirRequests)
{
    auto const shell = connected();
    std::vector<Started<CommandResult>> asked;
    for (int index = 0; index < 50; ++index)
        asked.push_back(loop.start(shell->run("echo " + std::to_string(index), std::nullopt)));
    for (int index = 0; index < 50; ++index) {
        loop.runUntil([&] { return asked[static_cast<std::size_t>(index)].isDone(); });
        EXPECT_EQ(asked[static_cast<std::size_t>(index)].value().output, std::to_string(index) + '\n');
    }
}

TEST_F(RemoteShellTest, aLargeRequestIsWrittenWhole)
{
    // More than a pipe holds.
    auto const text = std::string(3'000'000, 'x');
    EXPECT_EQ(run(connected(), "printf '" + text + "'").output, text);
}

TEST_F(RemoteShellTest, numbersGoOnInTheNextSession)
{
    auto const shell = connected();
    // The resident script runs a command where its own variables can be seen.
    EXPECT_EQ(run(shell, "echo $id").output, "1\n");
    EXPECT_EQ(run(shell, "echo $id").output, "2\n");
    loop.run(shell->shutdown());
    loop.run(shell->connect());
    EXPECT_EQ(run(shell, "echo $id").output, "3\n");
    EXPECT_THAT(standIn.starts(), SizeIs(2));
}

TEST_F(RemoteShellTest, thereIsNothingToAskBeforeConnecting)
{
    auto const shell = makeShell();
    EXPECT_THROW(run(shell, "true"), RemoteShellError::NotConnected);
    EXPECT_THROW(loop.run(shell->list("/", 1)), RemoteShellError::NotConnected);
    EXPECT_THROW(loop.run(shell->fileSize("/")), RemoteShellError::NotConnected);
    EXPECT_THROW(loop.run(shell->readChunk("/", 0, 1)), RemoteShellError::NotConnected);
    EXPECT_THAT(standIn.starts(), IsEmpty());
}

TEST_F(RemoteShellTest, aLossReachesAllThatIsUnderWay)
{
    auto const shell = connected();
    std::vector const asked{loop.start(shell->run(endOfTheClient(), std::nullopt)),
                            loop.start(shell->run("true", std::nullopt)), loop.start(shell->run("true", std::nullopt))};
    for (auto const &request : asked)
        EXPECT_EQ(lossOf(request), "connection closed");
    EXPECT_FALSE(stateOf(shell).isConnected);
    EXPECT_EQ(stateOf(shell).disconnectReason, "connection closed");
    EXPECT_THROW(run(shell, "true"), RemoteShellError::NotConnected);

    loop.run(shell->connect());
    EXPECT_EQ(run(shell, "echo again").output, "again\n");
}

TEST_F(RemoteShellTest, aLossIsToldInTheWordsOfSSH)
{
    standIn.behave({.message = "\r\n client_loop: \xFF broken\r\n"});
    auto const shell = connected();
    EXPECT_EQ(lossOf(loop.start(shell->run(endOfTheClient(), std::nullopt))), "client_loop: \xEF\xBF\xBD broken");
}

TEST_F(RemoteShellTest, theEndIsToldToAllThatIsUnderWay)
{
    Gate const gate;
    auto const shell = connected();
    auto const first = loop.start(shell->run(gate.waiting(), std::nullopt));
    auto const second = loop.start(shell->list("/", 1));
    loop.run(shell->shutdown());
    EXPECT_EQ(lossOf(first), "shut down");
    EXPECT_EQ(lossOf(second), "shut down");
    EXPECT_EQ(stateOf(shell).disconnectReason, "shut down");
    EXPECT_THROW(run(shell, "true"), RemoteShellError::NotConnected);
}

TEST_F(RemoteShellTest, endingWhatIsNotUpIsNothing)
{
    auto const shell = makeShell();
    loop.run(shell->shutdown());
    EXPECT_FALSE(stateOf(shell).isConnected);
}

TEST_F(RemoteShellTest, aTimeOutIsToldWithItsLateAnswer)
{
    auto const manual = std::make_shared<ManualClock>();
    clock = manual;
    Gate const gate;
    auto const shell = connected();
    auto const late = loop.start(shell->run(gate.waiting() + "; echo late", std::chrono::seconds(7)));
    auto const next = loop.start(shell->run("echo next", std::chrono::seconds(100)));
    loop.drain();
    manual->advance(std::chrono::seconds(8));
    loop.drain();
    EXPECT_FALSE(late.isDone());

    gate.open();
    loop.runUntil([&] { return late.isDone(); });
    try {
        late.value();
        FAIL() << "it was in time";
    } catch (RemoteShellError::TimedOut const &failure) {
        EXPECT_EQ(failure.limit, std::chrono::seconds(7));
        EXPECT_STREQ(failure.what(), "timed out after 7s");
        EXPECT_FALSE(failure.isRecoverableDrop());
    }
    loop.runUntil([&] { return next.isDone(); });
    EXPECT_EQ(next.value().output, "next\n");
    EXPECT_TRUE(stateOf(shell).isConnected);
}

TEST_F(RemoteShellTest, theLateAnswerOfAChangeIsItsAnswer)
{
    auto const manual = std::make_shared<ManualClock>();
    clock = manual;
    Gate const gate;
    auto const shell = connected();
    auto const late =
        loop.start(shell->run(gate.waiting() + "; echo made", std::chrono::seconds(7), CommandEffect::changes));
    loop.drain();
    manual->advance(std::chrono::hours(2));
    gate.open();
    loop.runUntil([&] { return late.isDone(); });
    EXPECT_EQ(late.value().output, "made\n");
}

TEST_F(RemoteShellTest, aRequestWithoutALimitHasThatOfTheSession)
{
    auto const manual = std::make_shared<ManualClock>();
    clock = manual;
    Gate const gate;
    auto const shell = connected({.requestTimeout = std::chrono::seconds(60)});
    auto const inTime = loop.start(shell->run(gate.waiting(), std::nullopt));
    loop.drain();
    manual->advance(std::chrono::seconds(59));
    gate.open();
    loop.runUntil([&] { return inTime.isDone(); });
    EXPECT_EQ(inTime.value().status, 0);

    auto const late = loop.start(shell->run(gate.waiting(), std::nullopt));
    loop.drain();
    manual->advance(std::chrono::seconds(60));
    gate.open();
    loop.runUntil([&] { return late.isDone(); });
    EXPECT_THROW(late.value(), RemoteShellError::TimedOut);
}

TEST_F(RemoteShellTest, theEndOfTheSessionEndsTheWaitForALateAnswer)
{
    auto const manual = std::make_shared<ManualClock>();
    clock = manual;
    Gate const gate;
    auto const shell = connected();
    auto const late = loop.start(shell->run(gate.waiting(), std::chrono::seconds(7)));
    loop.drain();
    manual->advance(std::chrono::seconds(7));
    loop.run(shell->shutdown());
    loop.runUntil([&] { return late.isDone(); });
    EXPECT_THROW(late.value(), RemoteShellError::TimedOut);
}

TEST_F(RemoteShellTest, whoStopsAskingLeavesTheAnswersToTheOthers)
{
    Gate const gate;
    auto const shell = connected();
    auto const stopped = loop.start(shell->run(gate.waiting() + "; echo stopped", std::nullopt));
    auto const other = loop.start(shell->run("echo other", std::nullopt));
    loop.drain();
    stopped.stop();
    gate.open();
    loop.runUntil([&] { return other.isDone(); });
    EXPECT_EQ(other.value().output, "other\n");
}

TEST_F(RemoteShellTest, aSessionThatIsDroppedEndsItsClient)
{
    connected();
    dropAll();
    nothingIsLeft();
    EXPECT_FALSE(hasChildren());
}

TEST_F(RemoteShellTest, hostsWithAPowerShellAreRefused)
{
    auto const shell = std::make_shared<RemoteShell>(
        RemoteShell::Collaborators{
            .strand = Strand(loop.context()), .io = *io, .clock = clock, .client = {.program = standIn.program()}},
        "host", RemoteShellOptions(), ShellDialect::powershell);
    EXPECT_THAT(connectFailure(shell), HasSubstr("POSIX shell"));
    EXPECT_THAT(standIn.starts(), IsEmpty());
}

TEST_F(RemoteShellTest, aListingThatIsLeftEndsAtOnceAndItsAnswerIsDropped)
{
    folder.file("file");
    auto const shell = connected();
    auto const busy =
        loop.start(shell->run("until [ -e '" + folder.path("go") + "' ]; do sleep 0.01; done; echo busy", {}));
    auto const left = loop.start(shell->list(folder.path(), 1));
    loop.drain();
    EXPECT_FALSE(stateOf(shell).isHeldUp);
    left.stop();
    loop.runUntil([&] { return left.isDone(); });
    EXPECT_THROW(left.value(), Cancelled);
    EXPECT_TRUE(stateOf(shell).isHeldUp) << "its answer is still to come";

    auto const next = loop.start(shell->run("echo next", {}));
    folder.file("go");
    loop.runUntil([&] { return next.isDone(); });
    EXPECT_EQ(busy.value().output, "busy\n");
    EXPECT_EQ(next.value().output, "next\n");
    EXPECT_FALSE(stateOf(shell).isHeldUp);
}

TEST_F(RemoteShellTest, aCommandThatWasSentIsWaitedForByACallerWhoHasLeft)
{
    auto const shell = connected();
    auto const command = loop.start(shell->run("echo done", {}));
    loop.drain();
    command.stop();
    loop.runUntil([&] { return command.isDone(); });
    EXPECT_EQ(command.value().output, "done\n");
    EXPECT_FALSE(stateOf(shell).isHeldUp);
}

TEST_F(RemoteShellTest, aListingIsCutAtItsRoom)
{
    for (int index = 0; index < 100; ++index)
        folder.file("a file with a name of some length " + std::to_string(index));
    auto const shell = connected();
    auto const response = loop.run(shell->list(folder.path(), 1, 1000));
    EXPECT_EQ(response.bytes.size(), 1000U);
    EXPECT_TRUE(response.truncated);
    EXPECT_FALSE(loop.run(shell->list(folder.path(), 1)).truncated) << "the next has its own room";
}

/// Folders whose listings are longer than what is granted at first.
class WholeListingTest : public RemoteShellTest {
protected:
    WholeListingTest()
    {
        for (int index = 0; index < 1500; ++index)
            folder.file("a file whose name is as long as names of photographs and of parts of archives are, number " +
                        std::to_string(index));
    }

    static WholeListing how(std::function<void(std::string_view)> onBytes = {})
    {
        return {.line = {}, .onBytes = std::move(onBytes)};
    }
};

TEST_F(WholeListingTest, aListingOfAnyLengthIsWhatIsOnTheDisk)
{
    auto const shell = connected({.maxResponseBytes = 1000});
    auto const response = loop.run(shell->listWhole(folder.path(), how()));
    EXPECT_GT(response.bytes.size(), 2 * LineSpeed::leastRoom) << "one grant is not enough";
    EXPECT_EQ(rowsIn(response, folder.path(), 1), rowsOnDisk(folder.path(), 1));
    EXPECT_FALSE(response.truncated);
    EXPECT_EQ(run(shell, "echo on").output, "on\n");
}

TEST_F(WholeListingTest, whatIsAskedMeanwhileIsAnsweredBehindIt)
{
    auto const shell = connected();
    auto const whole = loop.start(shell->listWhole(folder.path(), how()));
    auto const second = loop.start(shell->listWhole(folder.path(), how()));
    auto const command = loop.start(shell->run("echo behind", {}));
    loop.runUntil([&] { return whole.isDone() && second.isDone() && command.isDone(); });
    EXPECT_EQ(rowsIn(whole.value(), folder.path(), 1), rowsOnDisk(folder.path(), 1));
    EXPECT_EQ(second.value().bytes.size(), whole.value().bytes.size());
    EXPECT_EQ(command.value().output, "behind\n");
}

TEST_F(WholeListingTest, oneThatIsLeftIsBrokenOffOnTheHost)
{
    auto const shell = connected();
    // The host sends the first grant and no more: nothing is read while the test does not turn the loop.
    auto const whole = loop.start(shell->listWhole(folder.path(), how()));
    loop.drain();
    whole.stop();
    loop.runUntil([&] { return whole.isDone(); });
    EXPECT_THROW(whole.value(), Cancelled);
    EXPECT_EQ(run(shell, "echo next").output, "next\n");
    EXPECT_FALSE(stateOf(shell).isHeldUp);
    EXPECT_FALSE(loop.run(shell->list(folder.path(), 1)).bytes.empty());
}

TEST_F(WholeListingTest, itsBytesAreHandedOverWhileTheyCome)
{
    std::vector<std::string> seen;
    auto const shell = connected();
    auto const response =
        loop.run(shell->listWhole(folder.path(), how([&](std::string_view bytes) { seen.emplace_back(bytes); })));
    ASSERT_GT(seen.size(), 1U);
    for (std::size_t index = 0; index < seen.size(); ++index) {
        // What is behind the payload is the beginning of its marker.
        EXPECT_TRUE(response.bytes.starts_with(seen[index].substr(0, response.bytes.size())));
        if (index > 0)
            EXPECT_GE(seen[index].size(), seen[index - 1].size());
    }
}

TEST_F(WholeListingTest, aHostWhoseHeadReadsTooMuchSendsAsFastAsItCan)
{
    // Reads all there is for every run, as those do that read through a buffer.
    TemporaryFolder tools;
    auto const head = tools.file("head", "#!/bin/bash\n[ \"$1\" != --version ] || exit 1\n"
                                         "/usr/bin/head \"$@\"\n[ \"$2\" = 67108864 ] || exec cat >/dev/null\n");
    std::filesystem::permissions(head, std::filesystem::perms::owner_all);
    auto const shell =
        makeShell({}, program("export PATH='" + tools.path() + "':$PATH\nexec /bin/sh -c \"${@: -1}\"\n"));
    loop.run(shell->connect());
    auto const response = loop.run(shell->listWhole(folder.path(), how()));
    EXPECT_EQ(rowsIn(response, folder.path(), 1), rowsOnDisk(folder.path(), 1));
    EXPECT_EQ(run(shell, "echo on").output, "on\n");
}

TEST_F(WholeListingTest, theEndOfTheSessionEndsIt)
{
    auto const shell = connected();
    auto const busy = loop.start(shell->run("sleep 0.1; " + endOfTheClient(), {}));
    auto const whole = loop.start(shell->listWhole(folder.path(), how()));
    auto const behind = loop.start(shell->run("echo behind", {}));
    EXPECT_NE(lossOf(whole), "it was answered");
    loop.runUntil([&] { return behind.isDone(); });
    EXPECT_THROW(behind.value(), RemoteShellError::NotConnected);
    loop.run(shell->connect());
    EXPECT_EQ(run(shell, "echo on").output, "on\n");
    EXPECT_NE(lossOf(busy), "it was answered");
}

} // namespace
} // namespace tw::test
