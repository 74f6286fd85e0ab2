#include "TWCore/Async/Cancelled.h"
#include "tests/support/Gate.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RemoteShellTest.h"

namespace tw::test {
namespace {

using testing::HasSubstr;
using testing::SizeIs;

using Fault = StandInSSH::Fault;

/// Hosts and lines that do not do as they should.
class RemoteShellFaultsTest : public RemoteShellTest {
protected:
    /// For bash: reads the resident script up to where the nonce stands, and keeps it.
    static constexpr auto takeNonce = R"(
while IFS= read -r line; do
    [[ $line =~ @@TW([0-9a-f]{16}): ]] && break
done
nonce=${BASH_REMATCH[1]}
)";

    std::string failureWith(std::string const &script) { return connectFailure(makeShell({}, program(script))); }

    std::shared_ptr<ManualClock> stopTheClock()
    {
        auto manual = std::make_shared<ManualClock>();
        clock = manual;
        return manual;
    }

    /// Blocks until the program that is run as ssh has said on its own pipe that it is so far.
    void waitUntilExists(std::string const &path)
    {
        SystemClock real(*io);
        while (!std::filesystem::exists(path))
            loop.run(real.sleep(std::chrono::milliseconds(1)));
    }
};

TEST_F(RemoteShellFaultsTest, aClientThatDoesNotStart)
{
    auto const shell = makeShell({}, folder.path("none"));
    EXPECT_EQ(connectFailure(shell), "could not launch ssh: No such file or directory");
    EXPECT_EQ(connectFailure(makeShell({}, folder.file("no program"))), "could not launch ssh: Permission denied");
    EXPECT_FALSE(stateOf(shell).isConnected);
}

TEST_F(RemoteShellFaultsTest, aRefusalIsToldInTheWordsOfSSH)
{
    standIn.behave({.fault = Fault::refuse, .message = "host: Permission denied (publickey).\r\n"});
    auto const shell = makeShell();
    EXPECT_EQ(connectFailure(shell), "host: Permission denied (publickey).");
    EXPECT_EQ(stateOf(shell).disconnectReason, "shut down");

    standIn.behave({});
    loop.run(shell->connect());
    EXPECT_EQ(run(shell, "echo in").output, "in\n");
    EXPECT_EQ(stateOf(shell).disconnectReason, "shut down") << "that of the last session that ended";
}

TEST_F(RemoteShellFaultsTest, ofManyWordsTheLastAreKept)
{
    auto const words = "the first " + std::string(20'000, 'x') + " the last";
    standIn.behave({.fault = Fault::refuse, .message = words});
    EXPECT_EQ(connectFailure(makeShell()), words.substr(words.size() - 8192));
}

TEST_F(RemoteShellFaultsTest, aClientThatEndsWithoutAWord)
{
    EXPECT_EQ(failureWith("exit 255"), R"(disconnected(detail: "connection closed"))");
}

TEST_F(RemoteShellFaultsTest, aHostWithoutBash)
{
    standIn.behave({.fault = Fault::refuse, .message = "sh: 1: bash: not found\n", .exitCode = 127});
    EXPECT_EQ(connectFailure(makeShell()), "sh: 1: bash: not found");
}

TEST_F(RemoteShellFaultsTest, aHandshakeWithAnotherStatus)
{
    EXPECT_EQ(failureWith(takeNonce + std::string("echo \"@@TW$nonce:0:3@@\"; exec cat >/dev/null")),
              R"(connectFailed(host: "host", detail: "remote handshake status 3"))");
}

/// Hosts on which a start file has put another shell in the place of bash. The client is what the host runs.
class OtherShellTest : public RemoteShellTest, public testing::WithParamInterface<std::string> {};

TEST_P(OtherShellTest, isReplacedByABashThatListsAndRuns)
{
    auto const startsFile = folder.path("starts");
    auto const shell = makeShell({}, program("echo start >>'" + startsFile + "'; exec " + GetParam()));
    loop.run(shell->connect());
    EXPECT_EQ(contentOf(startsFile), "start\nstart\n");
    EXPECT_EQ(run(shell, "test -n \"$BASH_VERSION\" && echo bash").output, "bash\n");
    auto const listed = folder.folder("listed");
    folder.file("listed/it's a \"file\"");
    EXPECT_THAT(loop.run(shell->list(listed, 1)).bytes, HasSubstr("it's a \"file\""));

    loop.run(shell->shutdown());
    loop.run(shell->connect());
    EXPECT_EQ(contentOf(startsFile), "start\nstart\nstart\n") << "it is known by now";
}

INSTANTIATE_TEST_SUITE_P(Shells, OtherShellTest, testing::Values("zsh", "dash", "tcsh"),
                         [](auto const &shell) { return shell.param; });

TEST_F(RemoteShellFaultsTest, aBashIsNotReplaced)
{
    auto const startsFile = folder.path("starts");
    auto const shell = makeShell({}, program("echo start >>'" + startsFile + "'; BASH_ENV=/dev/null exec bash -s"));
    loop.run(shell->connect());
    EXPECT_EQ(run(shell, "echo ${BASH_ENV-none}").output, "/dev/null\n");
    EXPECT_EQ(contentOf(startsFile), "start\n");
}

TEST_F(RemoteShellFaultsTest, anotherShellThatCannotBeReplacedIsTheReasonOfTheFailure)
{
    EXPECT_EQ(failureWith(R"(
while IFS= read -r line; do
    [[ $line =~ @@TW([0-9a-f]{16}): ]] || continue
    case $line in
    exec*) echo "@@TW${BASH_REMATCH[1]}:0:910@@";;
    test*) echo "words of the other shell" >&2; echo "@@TW${BASH_REMATCH[1]}:0:909@@";;
    esac
done
)"),
              "a start file replaces the shell");
}

TEST_F(RemoteShellFaultsTest, theWordsOfAStartFileThatEndsTheSessionAreTheReason)
{
    EXPECT_EQ(failureWith("echo 'open terminal failed: not a terminal' >&2; exit 1"),
              "open terminal failed: not a terminal");
}

TEST_F(RemoteShellFaultsTest, wordsBeforeTheHandshakeAreNoHarm)
{
    standIn.behave({.preface = "Welcome!\n* 3 updates can be applied\n\nno end of line",
                    .message = "stty: standard input: Inappropriate ioctl for device\n"});
    auto const shell = connected();
    EXPECT_EQ(run(shell, "echo in").output, "in\n");
    EXPECT_EQ(stateOf(shell).handshake.startDirectory, std::filesystem::current_path().string());
}

TEST_F(RemoteShellFaultsTest, garbageBeforeTheHandshakeIsNoHarm)
{
    // What is no UTF-8 tells nothing of the host; the session works.
    standIn.behave({.preface = "\x01\xFF@@TW\xFE:0:0@@@@TW0123456789abcdef:0:1@@\n"});
    auto const shell = connected();
    EXPECT_EQ(stateOf(shell).handshake, ShellHandshake());
    EXPECT_EQ(run(shell, "echo in").output, "in\n");
}

TEST_F(RemoteShellFaultsTest, answersThatNobodyAskedForAreDropped)
{
    auto const shell = makeShell({}, program(takeNonce + std::string(R"(
printf 'perl\t/home\t@@TW%s:0:0@@\n' "$nonce"
echo "nobody's@@TW$nonce:77:0@@"
while IFS= read -r line; do
    case $line in *tw_run\ *) echo "old@@TW$nonce:0:0@@"; echo "asked@@TW$nonce:1:5@@"; echo "twice@@TW$nonce:1:6@@";; esac
done
)")));
    loop.run(shell->connect());
    EXPECT_EQ(stateOf(shell).handshake.startDirectory, "/home");
    auto const result = run(shell, "true");
    EXPECT_EQ(result.output, "asked");
    EXPECT_EQ(result.status, 5);
}

TEST_F(RemoteShellFaultsTest, aLineFeedThatIsLateDoesNotMoveTheBytesOfAFile)
{
    auto const shell = makeShell({}, program(takeNonce + std::string(R"(
printf 'perl\t/home\t@@TW%s:0:0@@' "$nonce"
while IFS= read -r line; do
    case $line in *tw_read\ 1\ *) printf '\n\nab@@TW%s:1:0@@\n' "$nonce";; esac
done
)")));
    loop.run(shell->connect());
    EXPECT_EQ(loop.run(shell->readChunk("/file", 0, 3)), "\nab");
}

TEST_F(RemoteShellFaultsTest, aHandshakeThatNeverComes)
{
    auto const manual = stopTheClock();
    auto const there = folder.path("there");
    auto const shell =
        makeShell({.connectTimeout = std::chrono::seconds(7)}, program("touch '" + there + "'; exec cat >/dev/null"));
    auto const connecting = loop.start(shell->connect());
    loop.drain();
    waitUntilExists(there);
    EXPECT_FALSE(connecting.isDone());
    EXPECT_THROW(run(shell, "true"), RemoteShellError::NotConnected);
    manual->advance(std::chrono::seconds(7));
    EXPECT_EQ(connectFailure(connecting), "no response within 7s");
    nothingIsLeft();
    EXPECT_FALSE(hasChildren());
}

TEST_F(RemoteShellFaultsTest, aHandshakeThatIsLateWithAFloodBeforeIt)
{
    // Without an end, and so without a bound but ours.
    auto const failure = failureWith("exec cat /dev/zero");
    EXPECT_THAT(failure, HasSubstr("the host sends without an end"));
    nothingIsLeft();
    EXPECT_FALSE(hasChildren());
}

TEST_F(RemoteShellFaultsTest, anAnswerWithoutAnEnd)
{
    auto const shell = connected();
    EXPECT_EQ(lossOf(loop.start(shell->run("cat /dev/zero", std::nullopt))), "the host sends without an end");
    loop.run(shell->connect());
    EXPECT_EQ(run(shell, "echo again").output, "again\n");
}

TEST_F(RemoteShellFaultsTest, aLineThatBreaksOffInAnAnswer)
{
    for (int index = 0; index < 100; ++index)
        folder.file("a file with a name of some length " + std::to_string(index));
    standIn.behave({.fault = Fault::cut, .afterBytes = 1500, .message = "Connection reset by peer\n"});
    auto const shell = connected();
    EXPECT_EQ(lossOf(loop.start(shell->list(folder.path(), 1))), "Connection reset by peer");
}

TEST_F(RemoteShellFaultsTest, aLineThatBreaksOffInTheHandshake)
{
    for (std::size_t const bytes : {0U, 1U, 10U}) {
        standIn.behave({.fault = Fault::cut, .afterBytes = bytes, .message = "broken pipe"});
        EXPECT_EQ(connectFailure(makeShell()), "broken pipe");
    }
}

TEST_F(RemoteShellFaultsTest, anAnswerWithoutItsMarkerIsWaitedForToTheEndOfTheSession)
{
    standIn.behave({.fault = Fault::stall, .afterBytes = 1000});
    auto const shell = connected();
    auto const asked = loop.start(shell->run("printf %2000s", std::nullopt));
    auto const behind = loop.start(shell->run("true", std::nullopt));
    loop.drain();
    loop.run(shell->shutdown());
    EXPECT_EQ(lossOf(asked), "shut down");
    EXPECT_EQ(lossOf(behind), "shut down");
}

TEST_F(RemoteShellFaultsTest, aClientThatDoesNotListenIsKilled)
{
    auto const shell = makeShell({}, program("trap '' TERM\n" + std::string(takeNonce) +
                                             "echo \"@@TW$nonce:0:0@@\"; while :; do read -r line || exec tail -f "
                                             "/dev/null; done"));
    loop.run(shell->connect());
    loop.run(shell->shutdown());
    nothingIsLeft();
    EXPECT_FALSE(hasChildren());
}

TEST_F(RemoteShellFaultsTest, whoStopsConnectingIsNotHeldUp)
{
    stopTheClock();
    auto const there = folder.path("there");
    auto const shell = makeShell({}, program("touch '" + there + "'; exec cat >/dev/null"));
    auto const connecting = loop.start(shell->connect());
    loop.drain();
    waitUntilExists(there);
    connecting.stop();
    loop.runUntil([&] { return connecting.isDone(); });
    EXPECT_THROW(connecting.value(), Cancelled);
    EXPECT_FALSE(stateOf(shell).isConnected);
    nothingIsLeft();
    EXPECT_FALSE(hasChildren());
}

TEST_F(RemoteShellFaultsTest, theEndComesWhileItConnects)
{
    stopTheClock();
    auto const shell = makeShell({}, program("exec cat >/dev/null"));
    auto const connecting = loop.start(shell->connect());
    loop.drain();
    loop.run(shell->shutdown());
    EXPECT_EQ(connectFailure(connecting), R"(disconnected(detail: "shut down"))");
}

TEST_F(RemoteShellFaultsTest, aSecondConnectTakesTheSessionOver)
{
    auto const shell = makeShell();
    auto const first = loop.start(shell->connect());
    auto const second = loop.start(shell->connect());
    EXPECT_EQ(connectFailure(first), R"(disconnected(detail: "connection closed"))");
    loop.runUntil([&] { return second.isDone(); });
    EXPECT_NO_THROW(second.value());
    EXPECT_EQ(run(shell, "echo in").output, "in\n");
}

TEST_F(RemoteShellFaultsTest, sessionsComeAndGoWithoutATrace)
{
    auto const shell = makeShell();
    for (int round = 0; round < 10; ++round) {
        loop.run(shell->connect());
        lossOf(loop.start(shell->run(round % 2 == 0 ? endOfTheClient() : "kill -KILL $$", std::nullopt)));
    }
    EXPECT_THAT(standIn.starts(), SizeIs(10));
    loop.run(shell->shutdown());
    nothingIsLeft();
    EXPECT_FALSE(hasChildren());
}

} // namespace
} // namespace tw::test
