#include "tests/support/SSHProviderTest.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "tests/hosts/StandInSSH.h"
#include "tests/support/DiskRows.h"
#include "tests/support/Gate.h"
#include "tests/support/Listings.h"

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(SSHProviderTest, itIsNamedByItsHost)
{
    auto const provider = makeProvider("ann@box");
    EXPECT_EQ(provider->identifier(), "ssh:ann@box");
    EXPECT_EQ(provider->persistentCacheIdentity(), "ssh:ann@box");
    EXPECT_EQ(provider->displayName(), "ann@box");
    EXPECT_EQ(provider->maxUsefulDepth(), 4);
}

TEST_F(SSHProviderTest, listingsAreWhatIsOnTheHost)
{
    reach();
    folder.folder("a/b/c");
    folder.file("a/b/c/file", "content");
    folder.file("a/it's \xFF", "content");
    folder.link("link", "a");
    auto const provider = connected();
    for (auto const priority : {FetchPriority::interactive, FetchPriority::background}) {
        for (int const depth : {1, 3})
            EXPECT_EQ(rowsOf(loop.run(provider->fetch(folder.path(), depth, priority)), folder.path()),
                      rowsOnDisk(folder.path(), depth));
    }
}

TEST_F(SSHProviderTest, aShellTellsWhereItStarts)
{
    reach();
    auto const provider = makeProvider();
    EXPECT_EQ(loop.run(provider->defaultDirectory()), "/");
    EXPECT_EQ(loop.run(provider->dialect()), ShellDialect::posix);
    EXPECT_EQ(loop.run(provider->archiveCapability()), ArchiveCapability());
    EXPECT_FALSE(loop.run(provider->isLive()));
    loop.run(provider->connect());
    EXPECT_EQ(loop.run(provider->defaultDirectory()) + '\n', run(provider, "pwd"));
    EXPECT_TRUE(loop.run(provider->isLive()));
}

TEST_F(SSHProviderTest, filesAreReadInParts)
{
    reach();
    auto const path = folder.file("it's", "0123456789");
    auto const provider = connected();
    EXPECT_EQ(loop.run(provider->readChunk(path, 2, 5)), "23456");
    EXPECT_EQ(loop.run(provider->fileSize(path)), 10);
    EXPECT_EQ(loop.run(provider->fileSize(folder.path("none"))), 0);
}

TEST_F(SSHProviderTest, moreThanOneAnswerMayHoldIsReadInPieces)
{
    reach();
    constexpr std::size_t answer = 16U << 20U;
    auto const path = folder.file("long", std::string(answer - 1, 'a') + "bc" + std::string(100, 'd'));
    auto const bytes = loop.run(connected()->readChunk(path, 1, 3 * answer));
    EXPECT_EQ(bytes.size(), answer + 100);
    EXPECT_EQ(bytes.substr(answer - 4, 6), "aabcdd");
}

TEST_F(SSHProviderTest, whatListsFoldersOnTheHostIsKnownWithASession)
{
    reach();
    auto const provider = makeProvider();
    EXPECT_EQ(loop.run(provider->remoteImplementation()), "unknown");
    loop.run(provider->connect());
    EXPECT_EQ(loop.run(provider->remoteImplementation()), "gnu");
}

TEST_F(SSHProviderTest, aCommandAnswersWhatItPrintsAndHowItEnds)
{
    reach();
    auto const result = loop.run(connected()->runCommand({.text = "echo out; exit 3"}));
    EXPECT_EQ(result.output, "out\n");
    EXPECT_EQ(result.status, 3);
}

TEST_F(SSHProviderTest, aTimeOutIsNoReasonToReconnect)
{
    reach();
    auto const provider = connected();
    auto const shell = shellOf(provider, CommandSession::interactive);
    EXPECT_THROW(loop.run(provider->runCommand({.text = "true", .limit = std::chrono::seconds(0)})),
                 RemoteShellError::TimedOut);
    EXPECT_EQ(shellOf(provider, CommandSession::interactive), shell);
}

TEST_F(SSHProviderTest, thereAreTwoSessionsOverOneConnection)
{
    reach();
    Gate const gate;
    auto const provider = connected();
    EXPECT_NE(shellOf(provider, CommandSession::interactive), shellOf(provider, CommandSession::background));
    EXPECT_EQ(line->traffic().connections, 1U);

    // What takes long on the second does not hold up the first.
    auto const slow = loop.start(provider->runCommand({.text = gate.waiting(), .session = CommandSession::background}));
    EXPECT_EQ(run(provider, "echo quick"), "quick\n");
    EXPECT_FALSE(slow.isDone());
    gate.open();
    finish(slow);
    EXPECT_EQ(slow.value().status, 0);
}

TEST_F(SSHProviderTest, aScanAheadHasASmallerBudget)
{
    reach();
    for (int index = 0; index < 100; ++index)
        folder.file("a file with a name of some length " + std::to_string(index));
    auto const provider = connected({.maxResponseBytes = 1000});
    for (auto const priority : {FetchPriority::interactive, FetchPriority::background})
        EXPECT_TRUE(loop.run(provider->fetch(folder.path(), 1, priority)).at(folder.path()).truncated());
    EXPECT_EQ(run(provider, "echo $TW_MAX"), "1000\n");
    auto const large = makeProvider();
    loop.run(large->connect());
    EXPECT_EQ(run(large, "echo $TW_MAX"), "8388608\n");
    EXPECT_EQ(run(large, "echo $TW_MAX", CommandSession::background), "2097152\n");
}

TEST_F(SSHProviderTest, beforeConnectingThereIsNothingToAsk)
{
    reach();
    auto const provider = makeProvider();
    EXPECT_THROW(loop.run(provider->fetch("/", 1, FetchPriority::interactive)), RemoteShellError::NotConnected);
    EXPECT_THROW(loop.run(provider->fetch("/", 1, FetchPriority::background)), RemoteShellError::NotConnected);
    EXPECT_THROW(loop.run(provider->reconnect()), RemoteShellError::NotConnected);
    EXPECT_EQ(line->traffic().connections, 0U);
}

TEST_F(SSHProviderTest, aCutIsMendedBehindTheCallersBack)
{
    reach();
    folder.file("file");
    auto const provider = connected();
    auto const shell = shellOf(provider, CommandSession::interactive);
    // A second session that is still on its way when the line is cut would try the line by itself.
    run(provider, "true", CommandSession::background);
    line->cut();
    EXPECT_EQ(loop.run(provider->fetch(folder.path(), 1, FetchPriority::interactive)).at(folder.path()).count(), 1U);
    EXPECT_EQ(line->traffic().connections, 2U);
    EXPECT_NE(shellOf(provider, CommandSession::interactive), shell);
    EXPECT_EQ(loop.run(provider->fetch(folder.path(), 1, FetchPriority::background)).at(folder.path()).count(), 1U);
    EXPECT_EQ(line->traffic().connections, 2U);
}

TEST_F(SSHProviderTest, connectingWhatIsConnectedDoesNotHideALaterLoss)
{
    reach();
    auto const provider = connected();
    run(provider, "true", CommandSession::background);
    auto const asked = loop.start(provider->runCommand(
        {.text = "cd '" + folder.path() + "'; touch begun; until [ -e go ]; do sleep 0.01; done; echo ended"}));
    loop.runUntil([&] { return run(provider, "ls '" + folder.path() + "'", CommandSession::background) == "begun\n"; });
    loop.run(provider->connect());
    line->cut();
    folder.file("go");
    finish(asked);
    EXPECT_EQ(asked.value().output, "ended\n");
}

TEST_F(SSHProviderTest, whoHasJoinedAnAttemptThatIsGivenUpMakesTheNext)
{
    reach();
    auto const provider = makeProvider();
    auto const first = connectInVain(provider);
    auto const second = loop.start(provider->connect());
    loop.drain();
    first.stop();
    finish(first);
    EXPECT_THROW(first.value(), Cancelled);
    line->resume();
    finish(second);
    EXPECT_NO_THROW(second.value());
    EXPECT_EQ(run(provider, "echo in"), "in\n");
}

TEST_F(SSHProviderTest, aReconnectionTakesOneClientASession)
{
    StandInSSH const standIn;
    auto const provider = std::make_shared<SSHProvider>(
        SSHProvider::Collaborators{.engine = engine, .sshProgram = standIn.program(), .sockets = sockets}, "host");
    loop.run(provider->connect());
    EXPECT_EQ(run(provider, "echo in", CommandSession::background), "in\n");
    loop.run(provider->reconnect());
    EXPECT_EQ(run(provider, "echo in", CommandSession::background), "in\n");
    EXPECT_EQ(standIn.starts().size(), 4U);
    loop.run(provider->disconnect());
}

TEST_F(SSHProviderTest, aReconnectionThatFailsIsTheFailureOfAll)
{
    reach();
    auto const provider = connected();
    run(provider, "true", CommandSession::background);
    host->stop();
    std::vector<Started<Listings>> fetches;
    for (auto const priority : {FetchPriority::interactive, FetchPriority::background, FetchPriority::interactive})
        fetches.push_back(loop.start(provider->fetch(folder.path(), 1, priority)));
    for (auto const &fetch : fetches)
        EXPECT_NE(failureOf(fetch), "it succeeded");
}

TEST_F(SSHProviderTest, aCutIsMendedOnceForAll)
{
    reach();
    auto const file = folder.file("file", "content");
    auto const provider = connected();
    run(provider, "true", CommandSession::background);
    line->cut(Ending::reset);
    std::vector<Started<Listings>> fetches;
    for (auto const priority :
         {FetchPriority::interactive, FetchPriority::background, FetchPriority::interactive, FetchPriority::background})
        fetches.push_back(loop.start(provider->fetch(folder.path(), 1, priority)));
    auto const size = loop.start(provider->fileSize(file));
    auto const chunk = loop.start(provider->readChunk(file, 0, 10));
    for (auto const &fetch : fetches) {
        finish(fetch);
        EXPECT_EQ(fetch.value().at(folder.path()).count(), 1U);
    }
    finish(size);
    finish(chunk);
    EXPECT_EQ(size.value(), 7);
    EXPECT_EQ(chunk.value(), "content");
    EXPECT_EQ(line->traffic().connections, 2U);
}

TEST_F(SSHProviderTest, aLineThatIsDeadIsNoticedThoughItsConnectionIsShared)
{
    reach();
    auto const provider = connected({.keepAliveInterval = std::chrono::seconds(1)});
    auto const shell = shellOf(provider, CommandSession::interactive);
    run(provider, "true", CommandSession::background);
    line->stall();
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(10)));
        return !loop.run(provider->isLive());
    });
    line->resume();
    EXPECT_NE(shellOf(provider, CommandSession::interactive), shell);
}

TEST_F(SSHProviderTest, aCutInTheMiddleOfAnAnswerIsMended)
{
    reach();
    auto const provider = connected();
    auto const asked =
        loop.start(provider->runCommand({.text = "echo begun; cd '" + folder.path() +
                                                 "'; touch begun; until [ -e go ]; do sleep 0.01; done; echo ended"}));
    loop.runUntil([&] { return run(provider, "ls '" + folder.path() + "'", CommandSession::background) == "begun\n"; });
    line->cut();
    folder.file("go");
    finish(asked);
    EXPECT_EQ(asked.value().output, "begun\nended\n");
    EXPECT_EQ(line->traffic().connections, 2U);
}

TEST_F(SSHProviderTest, whatNobodyWantsMuchDoesNotBringAHostBack)
{
    reach();
    auto const provider = connected();
    auto const probe = [&] {
        return provider->runCommand(
            {.text = "echo in", .session = CommandSession::background, .onLoss = CommandOnLoss::fails});
    };
    EXPECT_EQ(loop.run(probe()).output, "in\n");
    line->cut();
    EXPECT_THROW(loop.run(probe()), RemoteShellError);
    EXPECT_THROW(loop.run(probe()), RemoteShellError);
    EXPECT_EQ(line->traffic().connections, 1U);
    EXPECT_EQ(run(provider, "echo in"), "in\n") << "a person does";
    EXPECT_EQ(loop.run(probe()).output, "in\n");
}

TEST_F(SSHProviderTest, aLossOfTheSecondSessionIsMended)
{
    reach();
    auto const provider = connected();
    loop.run(outcomeOf(provider->runCommand({.text = "true", .session = CommandSession::background})));
    auto const lost = shellOf(provider, CommandSession::background);
    run(provider, "kill -KILL " + lost);
    EXPECT_NE(shellOf(provider, CommandSession::background), lost);
    EXPECT_EQ(line->traffic().connections, 1U) << "over the connection that was there";
}

TEST_F(SSHProviderTest, aHostThatIsGoneIsToldInTheWordsOfSSHUntilItIsBack)
{
    reach();
    auto const provider = connected();
    host->stop();
    for (int attempt = 0; attempt < 2; ++attempt)
        EXPECT_NE(failureOf(loop.start(provider->fetch("/", 1, FetchPriority::interactive))), "it succeeded");
    EXPECT_FALSE(loop.run(provider->isLive()));
    host->start();
    EXPECT_EQ(run(provider, "echo back"), "back\n");
    EXPECT_EQ(run(provider, "echo back", CommandSession::background), "back\n");
    EXPECT_TRUE(loop.run(provider->isLive()));
}

TEST_F(SSHProviderTest, aPortThatRefusesIsToldInTheWordsOfSSH)
{
    reach();
    client.add("host", host->address());
    host->stop();
    EXPECT_THAT(connectFailure(makeProvider()), HasSubstr("Connection refused"));
}

TEST_F(SSHProviderTest, whatIsUnderWayAtADisconnectFails)
{
    reach();
    Gate const gate;
    auto const provider = connected();
    auto const first = loop.start(provider->runCommand({.text = gate.waiting()}));
    auto const second = loop.start(provider->fetch("/", 1, FetchPriority::background));
    auto const third = loop.start(provider->fetch("/", 1, FetchPriority::interactive));
    loop.run(provider->disconnect());
    finish(second);
    EXPECT_EQ(failureOf(first), "disconnected: shut down");
    EXPECT_EQ(failureOf(third), "disconnected: shut down");
    EXPECT_FALSE(loop.run(provider->isLive()));
}

TEST_F(SSHProviderTest, aDisconnectWhileItConnectsEndsIt)
{
    reach();
    auto const provider = makeProvider();
    auto const connecting = connectInVain(provider);
    loop.run(provider->disconnect());
    EXPECT_EQ(failureOf(connecting), "disconnected: shut down");
    EXPECT_FALSE(loop.run(provider->isLive()));
    line->resume();
}

TEST_F(SSHProviderTest, connectingIsGivenUpWithItsCaller)
{
    reach();
    auto const provider = makeProvider();
    auto const connecting = connectInVain(provider);
    connecting.stop();
    finish(connecting);
    EXPECT_THROW(connecting.value(), Cancelled);
    // Once the line delivers again, the end of the client is all that the host hears of.
    line->resume();
    line->waitUntil([](Traffic const &traffic) { return traffic.open == 0; });
    EXPECT_FALSE(loop.run(provider->isLive()));
    EXPECT_EQ(line->traffic().connections, 1U);
}

TEST_F(SSHProviderTest, afterADisconnectItConnectsAgain)
{
    StandInSSH const standIn;
    auto const provider = std::make_shared<SSHProvider>(
        SSHProvider::Collaborators{.engine = engine, .sshProgram = standIn.program(), .sockets = sockets}, "host");
    for (std::size_t const starts : {2U, 4U}) {
        loop.run(provider->connect());
        EXPECT_EQ(run(provider, "echo in", CommandSession::background), "in\n");
        loop.run(provider->disconnect());
        EXPECT_EQ(standIn.starts().size(), starts);
    }
}

TEST_F(SSHProviderTest, twoWhoConnectAtOnceShareOneConnection)
{
    reach();
    auto const provider = makeProvider();
    auto const first = loop.start(provider->connect());
    auto const second = loop.start(provider->connect());
    finish(first);
    finish(second);
    EXPECT_NO_THROW(first.value());
    EXPECT_NO_THROW(second.value());
    EXPECT_EQ(shellOf(provider, CommandSession::interactive), shellOf(provider, CommandSession::interactive));
    EXPECT_EQ(line->traffic().connections, 1U);
}

TEST_F(SSHProviderTest, withoutAPlaceForSocketsEachSessionLogsIn)
{
    reach();
    auto const place = socketBase.path(".tw-" + std::to_string(::getuid()));
    ASSERT_EQ(::mkdir(place.c_str(), 0755), 0);
    auto const provider = connected();
    EXPECT_EQ(run(provider, "echo in", CommandSession::background), "in\n");
    EXPECT_EQ(line->traffic().connections, 2U) << "two sessions";
    EXPECT_THAT(namesOnDisk(place), IsEmpty());
}

TEST_F(SSHProviderTest, aLinkIsNoPlaceForSockets)
{
    reach();
    auto const elsewhere = socketBase.folder("elsewhere");
    ASSERT_EQ(::chmod(elsewhere.c_str(), 0700), 0);
    socketBase.link(".tw-" + std::to_string(::getuid()), elsewhere);
    EXPECT_EQ(run(connected(), "echo in", CommandSession::background), "in\n");
    EXPECT_EQ(line->traffic().connections, 2U);
    EXPECT_THAT(namesOnDisk(elsewhere), IsEmpty());
}

TEST_F(SSHProviderTest, theSocketGoesWithTheConnection)
{
    reach();
    auto const provider = connected();
    auto const place = socketBase.path(".tw-" + std::to_string(::getuid()));
    EXPECT_EQ(namesOnDisk(place), std::vector{ControlPath::socketName("host")});
    loop.run(provider->disconnect());
    line->cut();
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return namesOnDisk(place).empty();
    });
    EXPECT_EQ(line->traffic().open, 0U);
}

/// A host that answers each listing with status 1: for a path with "part" behind a record, else with nothing else.
class FailingListingsTest : public SSHProviderTest {
protected:
    FailingListingsTest()
    {
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        provider = connected();
    }

    std::string sshProgram() const override { return script; }

    TemporaryFolder programs;
    std::string const script = programs.file("ssh", R"(#!/bin/bash
while IFS= read -r line; do
    [[ $line =~ @@TW([0-9a-f]{16}): ]] && break
done
nonce=${BASH_REMATCH[1]}
printf 'gnu\t/home\t@@TW%s:0:0@@\n' "$nonce"
while read -r _ command id rest; do
    [[ $command == tw_ask && $id =~ ^[0-9]+$ ]] && printf '@@TW%s:%s:0@@\n' "$nonce" "$id"
    [[ $command == tw_list && $id =~ ^[0-9]+$ ]] || continue
    [[ $rest == *part* ]] && printf 'f\t7\t1\t644\tname\0'
    printf '@@TW%s:%s:1@@\n' "$nonce" "$id"
done
)");
    Provider provider;
};

TEST_F(FailingListingsTest, withoutAnEntryItIsAFailure)
{
    EXPECT_THAT(failureOf(loop.start(provider->fetch("/none", 1, FetchPriority::interactive))),
                testing::EndsWith("host could not read that folder"));
}

TEST_F(FailingListingsTest, whatCouldBeReadIsAListing)
{
    auto const listings = loop.run(provider->fetch("/part", 1, FetchPriority::interactive));
    EXPECT_THAT(names(listings.at("/part")), ElementsAre("name"));
}

} // namespace
} // namespace tw::test
