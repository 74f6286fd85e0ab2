#include "tests/hosts/LoginScripts.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/StandInSSH.h"
#include "tests/support/DiskRows.h"
#include "tests/support/SSHProviderTest.h"

namespace tw::test {
namespace {

using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

/// Hosts that let nobody in, or that are not as one would like them.
class SSHProviderRefusalTest : public SSHProviderTest {
protected:
    void reachThrough(std::string loginScript) { reach({.loginScript = std::move(loginScript)}); }
};

TEST_F(SSHProviderRefusalTest, aRefusedKey)
{
    reach({.login = TestHost::Login::refused});
    auto const provider = makeProvider();
    EXPECT_THAT(connectFailure(provider), HasSubstr("Permission denied (publickey)"));
    EXPECT_THROW(loop.run(provider->fetch("/", 1, FetchPriority::interactive)), RemoteShellError::ConnectFailed);

    host->setLogin(TestHost::Login::accepted);
    EXPECT_EQ(run(provider, "echo in"), "in\n");
}

TEST_F(SSHProviderRefusalTest, anUnknownHost)
{
    reach();
    client.add("host", host->address().through(line->port()), SSHClient::Knowledge::none);
    EXPECT_THAT(connectFailure(makeProvider()), HasSubstr("Host key verification failed"));
}

TEST_F(SSHProviderRefusalTest, aHostWithAnotherKey)
{
    reach();
    client.add("host", host->address().through(line->port()), SSHClient::Knowledge::another);
    EXPECT_THAT(connectFailure(makeProvider()), HasSubstr("REMOTE HOST IDENTIFICATION HAS CHANGED"));
}

TEST_F(SSHProviderRefusalTest, aNameThatCannotBeResolved)
{
    EXPECT_THAT(connectFailure(makeProvider("no-such-host.invalid")), HasSubstr("Could not resolve hostname"));
}

TEST_F(SSHProviderRefusalTest, aNameThatLooksLikeAnOption)
{
    auto const trap = local.path("trap");
    auto const failure = connectFailure(makeProvider("-oProxyCommand=touch " + trap));
    EXPECT_NE(failure, "it succeeded");
    EXPECT_FALSE(std::filesystem::exists(trap));
}

TEST_F(SSHProviderRefusalTest, anEmptyName)
{
    EXPECT_NE(connectFailure(makeProvider("")), "it succeeded");
}

TEST_F(SSHProviderRefusalTest, aHostThatGreetsIsUsedAsAnyOther)
{
    reach({.banner = "Authorised users only\n", .loginScript = loginWithNoise()});
    auto const provider = connected();
    EXPECT_EQ(run(provider, "echo in"), "in\n");
    EXPECT_THAT(loop.run(provider->defaultDirectory()), StartsWith("/"));
}

TEST_F(SSHProviderRefusalTest, aHostWithoutBash)
{
    reachThrough(loginWithoutBash());
    EXPECT_THAT(connectFailure(makeProvider()), HasSubstr("bash: not found"));
}

TEST_F(SSHProviderRefusalTest, aHostWithAnotherShell)
{
    reachThrough(loginWithAnotherShell());
    EXPECT_EQ(run(connected(), "echo in"), "in\n");
}

/// Hosts on which people log in to a shell that is not of the Bourne family.
class UnusualShellTest : public SSHProviderTest, public testing::WithParamInterface<std::string> {
protected:
    UnusualShellTest() { reach({.loginScript = "#!/bin/sh\nexec " + GetParam() + " -c \"$SSH_ORIGINAL_COMMAND\"\n"}); }
};

INSTANTIATE_TEST_SUITE_P(Shells, UnusualShellTest, testing::Values("fish", "tcsh"),
                         [](auto const &shell) { return shell.param; });

TEST_P(UnusualShellTest, isListedAndAskedLikeAnyOther)
{
    auto const provider = connected();
    folder.file("caf\xC3\xA9 it's");
    for (auto const priority : {FetchPriority::interactive, FetchPriority::background})
        EXPECT_EQ(loop.run(provider->fetch(folder.path(), 1, priority)).at(folder.path()).count(), 1U);
    EXPECT_EQ(run(provider, "echo $((6 * 7))"), "42\n") << "commands are for the resident shell";
}

TEST_P(UnusualShellTest, sendsAndTakesFiles)
{
    auto const provider = connected();
    loop.run(provider->upload(local.file("it's", "content"), folder.path("it's $HOME")));
    EXPECT_EQ(namesOnDisk(folder.path()), std::vector<std::string>{"it's $HOME"});
    loop.run(provider->download(folder.path("it's $HOME"), local.path("copy")));
    EXPECT_EQ(contentOf(local.path("copy")), "content");
}

TEST_F(SSHProviderRefusalTest, aHostWhoseStartFilePutsAnotherShellInThePlaceOfBash)
{
    reachThrough("#!/bin/sh\necho 'a start file may print'\nexec zsh\n");
    auto const provider = connected();
    folder.file("file");
    for (auto const priority : {FetchPriority::interactive, FetchPriority::background})
        EXPECT_EQ(loop.run(provider->fetch(folder.path(), 1, priority)).at(folder.path()).count(), 1U);
}

TEST_F(SSHProviderRefusalTest, aConnectionThatIsGivenUpLeavesNothingOfTheWayToTheHost)
{
    reach();
    // As `ssh -W` of a jump host whose line is frozen: it does not see that its input has ended.
    client.add("host", host->address(), SSHClient::Knowledge::right, "ProxyCommand sleep 1000");
    std::vector<ProcessRecord> processes;
    auto const connecting = loop.start(makeProvider()->connect());
    while (processes.empty()) {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        processes = descendantsOf(::getpid());
        std::erase_if(processes, [](auto const &process) { return process.name != "sleep"; });
    }
    connecting.stop();
    loop.runUntil([&] { return connecting.isDone(); });
    EXPECT_THROW(connecting.value(), Cancelled);
    auto const isThere = [](ProcessRecord const &process) {
        auto const now = recordOf(process.id);
        return now && now->born == process.born && !now->hasEnded();
    };
    while (std::ranges::any_of(processes, isThere))
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
}

TEST_F(SSHProviderRefusalTest, aNameThatTheLoginShellCannotReadIsNoOther)
{
    reachThrough("#!/bin/sh\nexec tcsh -c \"$SSH_ORIGINAL_COMMAND\"\n");
    auto const path = folder.file("caf\xC3\xA9");
    EXPECT_THAT(failureOf(loop.start(connected()->download(path, local.path("copy")))),
                HasSubstr("Illegal variable name"));
}

TEST_F(SSHProviderRefusalTest, aHostThatTalksGarbage)
{
    reachThrough(loginWithGarbage());
    EXPECT_EQ(connectFailure(makeProvider("host", {.shellTimeout = std::chrono::seconds(1)})), "no response within 1s");
}

TEST_F(SSHProviderRefusalTest, aHostThatBreaksOff)
{
    reachThrough(loginThatBreaksOff(10));
    EXPECT_NE(connectFailure(makeProvider()), "it succeeded");
}

TEST_F(SSHProviderRefusalTest, aClientThatDoesNotStart)
{
    auto const provider = std::make_shared<SSHProvider>(
        SSHProvider::Collaborators{.engine = engine, .sshProgram = local.path("none"), .sockets = sockets}, "host");
    EXPECT_EQ(connectFailure(provider), "could not launch ssh: No such file or directory");
}

TEST_F(SSHProviderRefusalTest, withoutTheSecondSessionAllGoesOverTheFirst)
{
    // The host lets one shell in and no other.
    auto const taken = local.path("taken");
    reachThrough("#!/bin/sh\ncase $SSH_ORIGINAL_COMMAND in\n*bash*) mkdir '" + taken +
                 "' || exit 1;;\nesac\nexec /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"\n");
    auto const provider = connected();
    folder.file("file");
    EXPECT_EQ(loop.run(provider->fetch(folder.path(), 1, FetchPriority::background)).at(folder.path()).count(), 1U);
    EXPECT_EQ(loop.run(provider->fetch(folder.path(), 1, FetchPriority::interactive)).at(folder.path()).count(), 1U);
}

} // namespace
} // namespace tw::test
