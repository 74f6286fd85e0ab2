#include "TWCore/Async/Cancelled.h"
#include "tests/hosts/StandInSSH.h"
#include "tests/support/FakeLoginDesk.h"
#include "tests/support/Gate.h"
#include "tests/support/SSHProviderTest.h"
#include "tests/support/StoppedProcess.h"

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using enum CommandSession;
using enum HostStatus::Phase;
using Fault = StandInSSH::Fault;

/// What a person waits for, and what happens when it does not come. The host is this machine.
class SSHProviderWaitingTest : public SSHProviderTest {
protected:
    std::string sshProgram() const override { return standIn.program(); }

    std::size_t count(Started<Listings> const &listing) const { return listing.value().at(folder.path()).count(); }

    Started<Listings> open(Provider const &provider)
    {
        auto listing = loop.start(provider->fetch(folder.path(), 1, FetchPriority::interactive));
        loop.run(provider->isLive()); // behind it on every strand that the request crosses
        return listing;
    }

    /// The phases of the connection, from the first to `last`.
    std::vector<HostStatus::Phase> phasesUntil(UpdateStream<HostStatus> &statuses, HostStatus::Phase last)
    {
        std::vector<HostStatus::Phase> phases;
        do {
            auto const status = loop.run(statuses.next());
            if (phases.empty() || phases.back() != status->phase)
                phases.push_back(status->phase);
        } while (phases.back() != last);
        return phases;
    }

    StandInSSH standIn;
};

TEST_F(SSHProviderWaitingTest, behindAListingThatWasLeftTheNextComesOverAnotherSession)
{
    Gate const gate;
    folder.file("file");
    auto const provider = connected();
    auto const busy = loop.start(provider->runCommand({.text = gate.waiting(), .session = interactive}));
    auto const left = open(provider);
    left.stop();
    finish(left);
    EXPECT_THROW(left.value(), Cancelled);

    auto const next = open(provider);
    finish(next);
    EXPECT_EQ(count(next), 1U);
    EXPECT_FALSE(busy.isDone()) << "a question that is waited for is asked again";
    loop.runUntil([&] {
        gate.open(); // the command of the session that was ended may take one
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return busy.isDone();
    });
    EXPECT_EQ(busy.value().status, 0);
}

TEST_F(SSHProviderWaitingTest, aSessionWithAChangingCommandIsNotEndedForTheNextListing)
{
    Gate const gate;
    folder.file("file");
    auto const provider = connected();
    auto const changing = loop.start(
        provider->runCommand({.text = gate.waiting(), .session = interactive, .effect = CommandEffect::changes}));
    auto const left = open(provider);
    left.stop();
    auto const next = open(provider);
    EXPECT_FALSE(next.isDone());
    gate.open();
    finish(changing);
    finish(next);
    EXPECT_EQ(changing.value().status, 0);
    EXPECT_EQ(count(next), 1U);
}

TEST_F(SSHProviderWaitingTest, aHostThatFreezesIsConnectedBesideAndTheAnswerComesFromThere)
{
    folder.file("file");
    auto const provider = connected();
    auto statuses = loop.run(provider->statuses());
    auto const frozen = shellOf(provider, interactive);
    StoppedProcess const stopped(std::stoi(frozen));
    auto const listing = open(provider);
    EXPECT_THAT(phasesUntil(statuses, silent), ElementsAre(up, silent));
    EXPECT_THAT(phasesUntil(statuses, up), ElementsAre(up));
    finish(listing);
    EXPECT_EQ(count(listing), 1U);
    EXPECT_NE(shellOf(provider, interactive), frozen);
}

TEST_F(SSHProviderWaitingTest, aSilentHostThatAnswersStaysAsItIs)
{
    folder.file("file");
    auto const provider = connected();
    auto statuses = loop.run(provider->statuses());
    auto const shell = shellOf(provider, interactive);
    StoppedProcess const stopped(std::stoi(shell));
    standIn.behave({.fault = Fault::stall}); // nothing comes of the connection beside
    auto const listing = open(provider);
    phasesUntil(statuses, silent);
    stopped.resume();
    EXPECT_THAT(phasesUntil(statuses, up), ElementsAre(up));
    finish(listing);
    EXPECT_EQ(count(listing), 1U);
    EXPECT_EQ(shellOf(provider, interactive), shell);
}

TEST_F(SSHProviderWaitingTest, whoGivesUpASilentHostIsNotHeldUp)
{
    auto const provider = connected();
    auto const shell = shellOf(provider, interactive);
    StoppedProcess const stopped(std::stoi(shell));
    auto const listing = open(provider);
    listing.stop();
    finish(listing);
    EXPECT_THROW(listing.value(), Cancelled);
}

TEST_F(SSHProviderWaitingTest, theStatusFollowsTheConnection)
{
    auto const provider = makeProvider();
    auto statuses = loop.run(provider->statuses());
    EXPECT_THAT(phasesUntil(statuses, notTried), ElementsAre(notTried));
    loop.run(provider->connect());
    EXPECT_THAT(phasesUntil(statuses, up), ElementsAre(reaching, up)) << "the stand-in logs no stages";
    loop.run(provider->disconnect());
    EXPECT_THAT(phasesUntil(statuses, notTried), ElementsAre(notTried));
}

// Logging in.

class SSHProviderLoginTest : public SSHProviderWaitingTest {
protected:
    Provider makeProviderWithDesk()
    {
        return keep(std::make_shared<SSHProvider>(
            SSHProvider::Collaborators{
                .engine = engine, .sshProgram = standIn.program(), .sockets = sockets, .loginDesk = desk},
            "host"));
    }

    /// A login on its way, whose client says nothing.
    Started<void> logInInVain(Provider const &provider)
    {
        standIn.behave({.fault = Fault::stall});
        auto login = loop.start(provider->logIn());
        loop.runUntil([&] {
            loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
            return standIn.starts().size() == 1;
        });
        loop.run(provider->isLive()); // behind what the strand has written
        return login;
    }

    std::shared_ptr<FakeLoginDesk> const desk = std::make_shared<FakeLoginDesk>();
};

TEST_F(SSHProviderLoginTest, onlyALoginMayAskTheUser)
{
    auto const provider = makeProviderWithDesk();
    loop.run(provider->connect());
    EXPECT_THAT(desk->logins, IsEmpty());
    loop.run(provider->disconnect());
    loop.run(provider->logIn());
    ASSERT_THAT(desk->logins, SizeIs(1));
    EXPECT_EQ(desk->logins.front()->host, "host");
    EXPECT_TRUE(desk->logins.front()->hasSucceeded);
    EXPECT_TRUE(desk->logins.front()->hasEnded);
    EXPECT_EQ(run(provider, "echo in"), "in\n");
}

TEST_F(SSHProviderLoginTest, aLoginThatTheUserCancelsFails)
{
    auto const provider = makeProviderWithDesk();
    auto const login = logInInVain(provider);
    desk->logins.front()->reports.refused(LoginDesk::Refusal::byUser);
    EXPECT_EQ(failureOf(login), "the login was cancelled");
    loop.run(provider->disconnect());
    EXPECT_TRUE(desk->logins.front()->hasEnded);
    EXPECT_FALSE(desk->logins.front()->hasSucceeded);
}

TEST_F(SSHProviderLoginTest, aLoginWhoseAnswersTheHostRefusesFails)
{
    auto const provider = makeProviderWithDesk();
    auto const login = logInInVain(provider);
    desk->logins.front()->reports.refused(LoginDesk::Refusal::byHost);
    EXPECT_EQ(failureOf(login), "three answers were not accepted");
}

TEST_F(SSHProviderLoginTest, anOpenQuestionIsSeenInTheStatus)
{
    auto const provider = makeProviderWithDesk();
    auto statuses = loop.run(provider->statuses());
    auto const login = logInInVain(provider);
    phasesUntil(statuses, reaching);
    desk->logins.front()->reports.questionOpened();
    EXPECT_THAT(phasesUntil(statuses, asking), ElementsAre(asking));
    desk->logins.front()->reports.questionClosed();
    EXPECT_THAT(phasesUntil(statuses, reaching), ElementsAre(reaching));
    login.stop();
    finish(login);
}

TEST_F(SSHProviderLoginTest, aLoginTakesOverAnAttemptThatMayNotAsk)
{
    auto const provider = makeProviderWithDesk();
    standIn.behave({.fault = Fault::stall});
    auto const quiet = loop.start(provider->connect());
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return standIn.starts().size() == 1;
    });
    standIn.behave({});
    auto const login = loop.start(provider->logIn());
    finish(login);
    finish(quiet);
    EXPECT_NO_THROW(login.value());
    EXPECT_NO_THROW(quiet.value());
    EXPECT_THAT(standIn.starts(), SizeIs(2));
}

/// With a real client and a real host.
class SSHProviderStagesTest : public SSHProviderTest {};

TEST_F(SSHProviderStagesTest, aHostThatAcceptsAndIsSilentIsGivenUpAfterTheTimeThatTheUserHasSet)
{
    reach();
    client.add("host", host->address().through(line->port()), SSHClient::Knowledge::right, "ConnectTimeout 1\n");
    auto const provider = makeProvider();
    auto const connecting = connectInVain(provider);
    EXPECT_THAT(failureOf(connecting), testing::AnyOf(HasSubstr("timed out"), "no response within 1s"));
}

TEST_F(SSHProviderStagesTest, theStagesOfAConnectionAreSeen)
{
    reach();
    auto const provider = makeProvider();
    auto statuses = loop.run(provider->statuses());
    auto const connecting = loop.start(provider->connect());
    std::set<HostStatus::Phase> seen;
    while (!seen.contains(up))
        seen.insert(loop.run(statuses.next())->phase);
    EXPECT_THAT(seen, ElementsAre(notTried, reaching, loggingIn, waitingForShell, up));
    finish(connecting);
}

/// The user has opened a connection to the host.
class UsersConnectionTest : public SSHProviderTest {
protected:
    void SetUp() override
    {
        reach();
        client.add("host", host->address().through(line->port()), SSHClient::Knowledge::right,
                   "ControlPath " + socket + "\n");
        ASSERT_TRUE(runClient({"-o", "BatchMode=yes", "-M", "-N", "-f", "--", "host"}));
        provider = connected();
    }

    void TearDown() override
    {
        loop.run(provider->disconnect());
        EXPECT_TRUE(runClient({"-O", "exit", "--", "host"}));
    }

    bool runClient(std::vector<std::string> arguments)
    {
        auto child = ChildProcess::start(engine.io(), {.program = client.program(), .arguments = std::move(arguments)});
        return child && loop.run((*child)->wait()).isSuccess();
    }

    std::string const socket = socketBase.path("users");
    Provider provider;
};

TEST_F(UsersConnectionTest, itIsUsed)
{
    EXPECT_EQ(run(provider, "echo in", work), "in\n");
    EXPECT_EQ(line->traffic().connections, 1U);
    EXPECT_THAT(loop.run(provider->transportOptions()), testing::Contains("ControlPath=" + socket));
}

TEST_F(UsersConnectionTest, longWorkHasOneOfItsTwoSessionsForWork)
{
    Gate const gate;
    std::vector<Started<CommandResult>> copies;
    for (auto const *const name : {"first", "second"})
        copies.push_back(loop.start(provider->runCommand(
            {.text = "touch '" + folder.path(name) + "'; " + gate.waiting(), .session = longWork})));
    EXPECT_EQ(run(provider, "echo short", work), "short\n");
    EXPECT_EQ(run(provider, "ls '" + folder.path() + "'"), "first\n");
    for (auto const &copy : copies) {
        gate.open();
        finish(copy);
    }
    EXPECT_TRUE(std::filesystem::exists(folder.path("second")));
}

} // namespace
} // namespace tw::test
