#include "TWCore/Model/ReadError.h"
#include "tests/hosts/StandInSSH.h"
#include "tests/support/Gate.h"
#include "tests/support/SSHProviderTest.h"

namespace tw::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;
using enum CommandSession;

/// The sessions with a host that is this machine, without a connection between.
class SSHProviderSessionsTest : public SSHProviderTest {
protected:
    std::string sshProgram() const override { return standIn.program(); }

    Started<CommandResult> change(Provider const &provider, std::string command)
    {
        return loop.start(
            provider->runCommand({.text = std::move(command), .session = work, .effect = CommandEffect::changes}));
    }

    std::string nonceOf(Provider const &provider, CommandSession session)
    {
        return run(provider, "declare -f tw_run | grep -o 'TW[0-9a-f]*:'", session);
    }

    /// A command at which the session's client dies. The resident shell is the child of a login shell, and that one of
    /// the client.
    static std::string endOfTheClient() { return "kill -KILL $(cut -d' ' -f4 /proc/$PPID/stat)"; }

    StandInSSH standIn;
};

TEST_F(SSHProviderSessionsTest, aSessionStartsWhenItIsFirstNeeded)
{
    auto const provider = connected();
    EXPECT_THAT(standIn.starts(), SizeIs(1));
    std::set<std::string> shells{shellOf(provider, interactive)};
    EXPECT_THAT(standIn.starts(), SizeIs(1));
    shells.insert(shellOf(provider, background));
    EXPECT_THAT(standIn.starts(), SizeIs(2));
    shells.insert(shellOf(provider, work));
    EXPECT_THAT(standIn.starts(), SizeIs(3));
    EXPECT_THAT(shells, SizeIs(3));
    for (auto const session : {interactive, background, work})
        EXPECT_TRUE(shells.contains(shellOf(provider, session)));
    EXPECT_THAT(standIn.starts(), SizeIs(3));
}

TEST_F(SSHProviderSessionsTest, longWorkHoldsUpNoListing)
{
    Gate const gate;
    folder.file("file");
    auto const provider = connected();
    auto const copying = change(provider, gate.waiting());
    for (auto const priority : {FetchPriority::interactive, FetchPriority::background})
        EXPECT_EQ(loop.run(provider->fetch(folder.path(), 1, priority)).at(folder.path()).count(), 1U);
    EXPECT_FALSE(copying.isDone());
    gate.open();
    finish(copying);
    EXPECT_EQ(copying.value().status, 0);
}

TEST_F(SSHProviderSessionsTest, aReconnectionOfTheOthersLetsWorkGoOn)
{
    Gate const gate;
    auto const provider = connected();
    auto const shell = shellOf(provider, work);
    auto const copying = change(provider, gate.waiting());
    loop.run(provider->reconnect());
    gate.open();
    finish(copying);
    EXPECT_EQ(copying.value().status, 0);
    EXPECT_EQ(shellOf(provider, work), shell);
}

TEST_F(SSHProviderSessionsTest, aCommandThatReadsItsInputFindsNone)
{
    auto const provider = connected();
    for (auto const session : {interactive, background, work}) {
        auto const reader = loop.start(provider->runCommand({.text = "cat; echo end", .session = session}));
        auto const behind = loop.start(provider->runCommand({.text = "echo behind", .session = session}));
        finish(reader);
        finish(behind);
        EXPECT_EQ(reader.value().output, "end\n");
        EXPECT_EQ(behind.value().output, "behind\n");
    }
}

TEST_F(SSHProviderSessionsTest, aChangeThatWasSentIsNotSentAgain)
{
    auto const provider = connected();
    auto const done = folder.path("done");
    auto const lost = change(provider, "echo once >> '" + done + "'; " + endOfTheClient());
    EXPECT_EQ(failureOf(lost), "connection to host was lost; it is not known whether this was done");
    EXPECT_THROW(lost.value(), RemoteShellError::OutcomeUnknown);
    EXPECT_EQ(run(provider, "cat '" + done + "'", work), "once\n");
}

TEST_F(SSHProviderSessionsTest, aQuestionThatWasSentIsAskedAgainOnce)
{
    auto const provider = connected();
    auto const asked = folder.path("asked");
    for (auto const session : {interactive, work}) {
        auto const lost = loop.start(
            provider->runCommand({.text = "echo once >> '" + asked + "'; " + endOfTheClient(), .session = session}));
        EXPECT_THAT(failureOf(lost), StartsWith("disconnected: "));
    }
    EXPECT_EQ(contentOf(asked), "once\nonce\nonce\nonce\n");
}

TEST_F(SSHProviderSessionsTest, aChangeThatWasNotSentYetIsSentOverANewSession)
{
    auto const provider = connected();
    auto const first = shellOf(provider, work);
    loop.run(provider->disconnect());
    auto const done = folder.path("done");
    auto const late = change(provider, "echo once >> '" + done + "'");
    finish(late);
    EXPECT_EQ(late.value().status, 0);
    EXPECT_EQ(contentOf(done), "once\n");
    EXPECT_NE(shellOf(provider, work), first);
}

TEST_F(SSHProviderSessionsTest, aChangeThatFailsBeforeItIsSentSaysWhy)
{
    auto const provider = connected();
    loop.run(provider->disconnect());
    standIn.behave({.fault = StandInSSH::Fault::refuse, .message = "no way"});
    EXPECT_EQ(failureOf(change(provider, "true")), "no way");
}

TEST_F(SSHProviderSessionsTest, aHostThatRefusesASessionForWorkDoesItsWorkInTheFirst)
{
    auto const provider = connected();
    standIn.behave({.fault = StandInSSH::Fault::refuse, .message = "no more sessions"});
    EXPECT_EQ(shellOf(provider, work), shellOf(provider, interactive));
}

TEST_F(SSHProviderSessionsTest, workThatWaitsForItsTurnEndsWithADisconnect)
{
    Gate const gate;
    auto const provider = connected();
    std::vector<Started<CommandResult>> copies;
    for (auto const *const command : {"first", "second", "third"})
        copies.push_back(loop.start(provider->runCommand(
            {.text = "touch '" + folder.path(command) + "'; " + gate.waiting(), .session = longWork})));
    loop.runUntil([&] { return run(provider, "ls '" + folder.path() + "'") == "first\nsecond\n"; });
    loop.run(provider->disconnect());
    EXPECT_EQ(failureOf(copies.back()), "disconnected: shut down");
    EXPECT_FALSE(std::filesystem::exists(folder.path("third")));
}

TEST_F(SSHProviderSessionsTest, aHostThatRefusesAnotherSessionForWorkDoesItBehindTheFirst)
{
    Gate const gate;
    auto const provider = connected();
    auto const shell = shellOf(provider, work);
    standIn.behave({.fault = StandInSSH::Fault::refuse, .message = "no more sessions"});
    std::vector copies{change(provider, gate.waiting())};
    for (auto const session : {longWork, work})
        copies.push_back(loop.start(provider->runCommand({.text = "echo $$", .session = session})));
    gate.open();
    for (auto const &copy : copies)
        finish(copy);
    EXPECT_EQ(copies[1].value().output, shell);
    EXPECT_EQ(copies[2].value().output, shell);
}

TEST_F(SSHProviderSessionsTest, aChangeThatIsUnderWayAtADisconnectMayBeDone)
{
    Gate const gate;
    auto const provider = connected();
    shellOf(provider, work);
    auto const changing = change(provider, gate.waiting());
    loop.run(provider->disconnect());
    EXPECT_THAT(failureOf(changing), HasSubstr("it is not known whether this was done"));
}

TEST_F(SSHProviderSessionsTest, aSessionKeepsItsNonceAndEachHasItsOwn)
{
    auto const provider = connected();
    auto const nonces = [&] {
        return std::vector{nonceOf(provider, interactive), nonceOf(provider, background), nonceOf(provider, work)};
    };
    auto const first = nonces();
    for (auto const &nonce : first)
        EXPECT_THAT(nonce, AllOf(StartsWith("TW"), SizeIs(std::string("TW0123456789abcdef:\n").size())));
    EXPECT_THAT(std::set(first.begin(), first.end()), SizeIs(3));
    loop.run(provider->reconnect());
    EXPECT_EQ(nonces(), first);
    loop.run(provider->disconnect());
    loop.run(provider->connect());
    EXPECT_EQ(nonces(), first);
}

/// A host whose cp notes that it has begun, and waits until the test lets it go on.
class LongWorkTest : public SSHProviderTest {
protected:
    LongWorkTest()
    {
        auto const cp =
            tools.file("cp", "#!/bin/sh\necho >>" + begun + "\n" + gate.waiting() + "\nexec /bin/cp \"$@\"\n");
        EXPECT_EQ(::chmod(cp.c_str(), 0755), 0);
        reach(
            {.loginScript = "#!/bin/sh\nPATH=" + tools.path() + ":$PATH exec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n"});
        provider = connected();
    }

    Started<void> copy(std::string const &name)
    {
        return loop.start(provider->copyOnRemote({folder.file(name, name)}, local.path()));
    }

    void waitForBegun(std::size_t count)
    {
        while (!std::filesystem::exists(begun) || std::filesystem::file_size(begun) < count)
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
    }

    TemporaryFolder tools;
    std::string const begun = tools.path("begun");
    Gate gate;
    Provider provider;
};

TEST_F(LongWorkTest, twoLongCopiesHoldUpNoShortWorkAndTheThirdWaitsForThem)
{
    std::vector copies{copy("a"), copy("b")};
    waitForBegun(2);
    copies.push_back(copy("c"));
    loop.run(provider->makeDirectory(folder.path("new")));
    loop.run(provider->rename(folder.path("new"), folder.path("renamed")));
    EXPECT_TRUE(std::filesystem::is_directory(folder.path("renamed")));
    loop.run(provider->remove({folder.path("renamed")}));
    EXPECT_FALSE(std::filesystem::exists(folder.path("renamed")));
    EXPECT_EQ(std::filesystem::file_size(begun), 2U);
    for (auto const *const name : {"a", "b", "c"})
        EXPECT_FALSE(std::filesystem::exists(local.path(name)));
    for (auto const done : {1, 2, 3}) {
        gate.open();
        loop.runUntil([&] { return std::ranges::count_if(copies, &Started<void>::isDone) == done; });
    }
    for (auto const &each : copies)
        EXPECT_EQ(failureOf(each), "it succeeded");
    EXPECT_EQ(contentOf(local.path("c")), "c");
}

/// What is lost between is lost on a real line.
class ChangeOverALineTest : public SSHProviderTest {
protected:
    ChangeOverALineTest()
    {
        reach();
        provider = connected();
        shellOf(provider, work);
        for (auto const *const name : {"old", "to be deleted"})
            folder.file(name);
    }

    std::vector<std::function<Task<void>()>> changes() const
    {
        return {[this] { return provider->makeDirectory(folder.path("made")); },
                [this] { return provider->rename(folder.path("old"), folder.path("new")); },
                [this] { return provider->remove({folder.path("to be deleted")}); }};
    }

    std::string outcomeOfLoss(std::function<Task<void>()> const &change, std::function<bool()> const &isTime)
    {
        auto const changing = loop.start(change());
        while (!isTime())
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        line->cut();
        line->resume();
        return failureOf(changing);
    }

    std::set<std::string> names() const
    {
        std::set<std::string> found;
        for (auto const &entry : std::filesystem::directory_iterator(folder.path()))
            found.insert(entry.path().filename().string());
        return found;
    }

    Provider provider;
};

TEST_F(ChangeOverALineTest, aCutBehindAChangeLeavesItUnknown)
{
    auto const changing = loop.start(
        provider->runCommand({.text = "cd '" + folder.path() + "'; touch begun; until [ -e go ]; do sleep 0.01; done",
                              .session = work,
                              .effect = CommandEffect::changes}));
    loop.runUntil([&] { return run(provider, "cd '" + folder.path() + "'; echo beg*") == "begun\n"; });
    line->cut();
    folder.file("go");
    EXPECT_THAT(failureOf(changing), HasSubstr("it is not known whether this was done"));
    EXPECT_EQ(run(provider, "echo back", work), "back\n");
}

TEST_F(ChangeOverALineTest, aChangeThatIsLostOnItsWayIsNotCalledMade)
{
    auto const before = names();
    std::vector<std::string> outcomes;
    for (auto const &change : changes()) {
        shellOf(provider, work);
        line->stall(Ways::towardsHost);
        auto const sent = line->traffic().towardsHost.received;
        constexpr int lessThanACommand = 100; // but more than a sign of life of ssh
        outcomes.push_back(
            outcomeOfLoss(change, [&] { return line->traffic().towardsHost.received > sent + lessThanACommand; }));
    }
    EXPECT_THAT(outcomes,
                ElementsAre("create folder failed on " + folder.path("made") +
                                ": the connection was lost before the folder was made",
                            "rename failed on " + folder.path("old") + ": the connection was lost before it was moved",
                            "delete failed on " + folder.path("to be deleted") +
                                ": the connection was lost, and 1 of 1 were still there afterwards"));
    EXPECT_EQ(names(), before);
}

TEST_F(ChangeOverALineTest, aChangeWhoseAnswerIsLostIsFoundToBeMade)
{
    for (auto const &change : changes()) {
        shellOf(provider, work);
        line->stall(Ways::towardsClient);
        auto const before = names();
        EXPECT_EQ(outcomeOfLoss(change, [&] { return names() != before; }), "it succeeded");
    }
    EXPECT_THAT(names(), ElementsAre("made", "new"));
}

/// Programs that are run in place of ssh.
class OddClientTest : public SSHProviderTest {
protected:
    std::string sshProgram() const override { return script; }

    void behave(std::string const &text)
    {
        programs.file("ssh", "#!/bin/bash\n[[ \" $* \" == *\" -G \"* ]] && exit\n" + text);
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    }

    int starts() const { return static_cast<int>(std::ranges::count(contentOf(programs.path("starts")), '\n')); }

    TemporaryFolder programs;
    std::string const script = programs.path("ssh");
};

TEST_F(OddClientTest, aWindowsHostIsKnownByWhatItPrintsInPlaceOfAGreeting)
{
    behave("echo start >> '" + programs.path("starts") +
           "'; cat >/dev/null & echo '\"C:\\WINDOWS\\system32\\cmd.exe\"; bash -s'");
    auto const provider = makeProvider();
    EXPECT_EQ(connectFailure(provider), "this version speaks to hosts with a POSIX shell only");
    EXPECT_EQ(loop.run(provider->dialect()), ShellDialect::powershell);
    EXPECT_EQ(starts(), 1);
    EXPECT_EQ(connectFailure(provider), "this version speaks to hosts with a POSIX shell only");
    EXPECT_EQ(starts(), 2) << "the host is asked anew";
}

TEST_F(OddClientTest, aHostThatPrintsAnythingElseIsNoWindowsHost)
{
    behave("echo 'This account is not available.'");
    auto const provider = makeProvider();
    EXPECT_EQ(connectFailure(provider), R"(disconnected(detail: "connection closed"))");
    EXPECT_EQ(loop.run(provider->dialect()), ShellDialect::posix);
}

TEST_F(OddClientTest, ofWhatAHostPrintsInPlaceOfAGreetingTheBeginningCounts)
{
    auto const printing = [](int bytes) {
        return "head -c " + std::to_string(bytes) + " /dev/zero | tr '\\0' x; echo cmd.exe";
    };
    behave(printing(65'536 - 7));
    auto const provider = makeProvider();
    EXPECT_EQ(connectFailure(provider), "this version speaks to hosts with a POSIX shell only");
    behave(printing(65'536 - 6));
    EXPECT_EQ(connectFailure(provider), R"(disconnected(detail: "connection closed"))");
}

TEST_F(OddClientTest, ofTheWordsOfATransferTheFirst65536BytesAreKept)
{
    behave("head -c 100000 /dev/zero | tr '\\0' x >&2; exit 1");
    try {
        loop.run(makeProvider()->download("/far", local.path("target")));
        FAIL() << "the client fails";
    } catch (ReadError::NotReadable const &failure) {
        EXPECT_EQ(failure.detail, std::string(65'536, 'x'));
    }
}

} // namespace
} // namespace tw::test
