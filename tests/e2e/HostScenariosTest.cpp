#include "TWEngine/SSH/SSHProvider.h"
#include "Tarnwick/Panes/HostWording.h"
#include "tests/hosts/LoginScripts.h"
#include "tests/support/SSHProviderTest.h"

namespace tw::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// What the strip of a pane says of a real host that cannot be reached, and why.
class HostScenariosTest : public SSHProviderTest {
protected:
    PaneNotice noticeOf(std::string const &name = "host")
    {
        auto const provider = makeProvider(name);
        auto const connecting = loop.start(provider->connect());
        loop.runUntil([&] { return connecting.isDone(); });
        try {
            connecting.value();
        } catch (...) {
            return HostWording::failure(std::current_exception(), name, "/");
        }
        ADD_FAILURE() << "it succeeded";
        return {};
    }

    std::string textOf(std::string const &name = "host") { return noticeOf(name).text.english(); }

    std::string textOfHostThatRuns(std::string const &loginScript)
    {
        reach({.loginScript = "#!/bin/sh\n" + loginScript});
        return textOf();
    }
};

TEST_F(HostScenariosTest, anAccountWithoutAShell)
{
    EXPECT_EQ(textOfHostThatRuns("exec /usr/sbin/nologin\n"),
              "Your account has no shell. host says: This account is currently not available.");
}

TEST_F(HostScenariosTest, aHostWithoutBash)
{
    reach({.loginScript = loginWithoutBash()});
    EXPECT_THAT(textOf(), StartsWith("host has no bash"));
}

TEST_F(HostScenariosTest, aHostWhoseKeyHasChanged)
{
    reach();
    client.add("host", host->address(), SSHClient::Knowledge::another);
    auto const notice = noticeOf();
    EXPECT_THAT(notice.text.english(),
                HasSubstr("The key of host has changed. This happens when it was installed anew, or when somebody "
                          "stands in between. The old key is in known_hosts_host:1."));
    EXPECT_THAT(notice.keys, HasSubstr("SHA256:"));
    EXPECT_EQ(notice.actions.front(), PaneNotice::Action::showKey);
}

TEST_F(HostScenariosTest, aHostWhoseKeyIsNotKnown)
{
    reach();
    client.add("host", host->address(), SSHClient::Knowledge::none);
    auto const notice = noticeOf();
    EXPECT_EQ(notice.text.english(), "The key of host is not known yet. Log in to see it and to decide.");
    EXPECT_EQ(notice.actions.front(), PaneNotice::Action::logIn);
}

TEST_F(HostScenariosTest, aHostThatIsSwitchedOff)
{
    reach();
    line.reset();
    EXPECT_THAT(textOf(), StartsWith("host refuses connections."));
}

TEST_F(HostScenariosTest, aNameThatNobodyKnows)
{
    EXPECT_THAT(textOf("no-such-host.invalid"), HasSubstr("no-such-host.invalid"));
}

TEST_F(HostScenariosTest, aStartFileThatRefusesAndEnds)
{
    EXPECT_THAT(textOfHostThatRuns("echo 'Maintenance until noon'\nexit 1\n"), HasSubstr("Maintenance until noon"));
}

TEST_F(HostScenariosTest, aStartFileThatStartsATerminalProgram)
{
    EXPECT_THAT(textOfHostThatRuns("echo 'open terminal failed: not a terminal' >&2\nexit 1\n"),
                HasSubstr("open terminal failed: not a terminal"));
}

} // namespace
} // namespace tw::test
