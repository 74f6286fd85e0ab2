#include "TWEngine/SSH/HostFailure.h"

#include "tests/hosts/LoginScripts.h"
#include "tests/support/SSHProviderTest.h"

namespace tw::test {
namespace {

using Cause = HostFailure::Cause;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

/// What is understood of a real host that does not open. What other versions of ssh say is in the tests of the
/// sentences.
class HostFailureTest : public SSHProviderTest {
protected:
    HostFailure failureOfHost()
    {
        auto const attempt = loop.start(makeProvider()->connect());
        finish(attempt);
        try {
            attempt.value();
        } catch (RemoteShellError::ConnectFailed const &failed) {
            return HostFailure::of(failed);
        }
        ADD_FAILURE() << "it succeeded";
        return {};
    }

    HostFailure failureBehind(std::string loginScript)
    {
        reach({.loginScript = std::move(loginScript)});
        return failureOfHost();
    }
};

TEST_F(HostFailureTest, aRefusedKeyIsNamed)
{
    reach({.login = TestHost::Login::refused});
    auto const failure = failureOfHost();
    EXPECT_EQ(failure.cause, Cause::refusedKeys);
    EXPECT_THAT(failure.offeredKeys, ElementsAre(host->address().identityFile));
    EXPECT_THAT(failure.offeredMethods, ElementsAre("publickey"));
    EXPECT_FALSE(failure.canLogIn());
}

TEST_F(HostFailureTest, anUnknownKeyNeedsALogin)
{
    reach();
    client.add("host", host->address().through(line->port()), SSHClient::Knowledge::none);
    auto const failure = failureOfHost();
    EXPECT_EQ(failure.cause, Cause::unknownKey);
    EXPECT_TRUE(failure.canLogIn());
}

TEST_F(HostFailureTest, aChangedKeyIsComparedWithTheStoredOne)
{
    reach();
    client.add("host", host->address().through(line->port()), SSHClient::Knowledge::another);
    auto const failure = failureOfHost();
    EXPECT_EQ(failure.cause, Cause::changedKey);
    EXPECT_THAT(failure.shownFingerprint, StartsWith("SHA256:"));
    EXPECT_THAT(failure.storedFingerprint, StartsWith("SHA256:"));
    EXPECT_NE(failure.shownFingerprint, failure.storedFingerprint);
    EXPECT_THAT(failure.storedAt, HasSubstr(client.home()));
    EXPECT_FALSE(failure.canLogIn());
}

TEST_F(HostFailureTest, anAccountWithoutAShellSaysSo)
{
    auto const failure = failureBehind("echo 'This account is currently not available.'; exit 1");
    EXPECT_EQ(failure.cause, Cause::noShell);
    EXPECT_EQ(failure.hostSays, "This account is currently not available.");
}

TEST_F(HostFailureTest, anAccountForFilesOnlyHasNoShell)
{
    EXPECT_EQ(failureBehind("echo 'This service allows sftp connections only.'; exit 1").cause, Cause::onlySftp);
}

TEST_F(HostFailureTest, aShellThatEndsHasItsLastWords)
{
    auto const failure = failureBehind("echo 'Connection refused by policy' >&2; exit 0");
    EXPECT_EQ(failure.cause, Cause::endedShell);
    EXPECT_EQ(failure.stage, ClientStage::waitingForShell);
    EXPECT_EQ(failure.hostSays, "Connection refused by policy");
}

TEST_F(HostFailureTest, aHostWithoutBashIsNoHostForUs)
{
    EXPECT_EQ(failureBehind(loginWithoutBash()).cause, Cause::noBash);
}

TEST_F(HostFailureTest, aStoppedHostRefusesConnections)
{
    reach();
    client.add("host", host->address());
    host->stop();
    EXPECT_EQ(failureOfHost().cause, Cause::refusedConnection);
}

} // namespace
} // namespace tw::test
