#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/e2e/ProgramTest.h"
#include "tests/hosts/DelayProxy.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/SSHHome.h"
#include "tests/hosts/TestHost.h"

#include <filesystem>

#include <pwd.h>
#include <unistd.h>

namespace tw::test {

namespace {

/// The program with a host: a real sshd behind a line that can be cut, and the ssh that every user has.
///
///     remote/first/inner/  remote/second/of files/file
class HostTest : public ProgramTest {
protected:
    HostTest()
    {
        for (auto const *name : {"remote/first/inner", "remote/second/of files"})
            folder.folder(name);
        folder.file("remote/second/of files/file");
        client.add(alias, host.address().through(line.port()));
    }

    /// ssh asks the password database for the home folder, and gets one whose .ssh knows the host.
    Child::Environment environment() const override
    {
        auto changes = ProgramTest::environment();
        changes.merge(sshHome(folder, client.home()));
        return changes;
    }

    std::string remote(std::string const &name = {}) const { return at(name.empty() ? "remote" : "remote/" + name); }

    /// Where the user of this test is after a login on the host, which is this machine.
    static std::string loginFolder()
    {
        std::string home = ::getpwuid(::getuid())->pw_dir;
        return std::filesystem::exists(home) ? home : "/";
    }

    /// This machine on the left, the host on the right.
    Child startWithHost() const { return start({"--left", at("left"), "--right", alias + ":" + remote()}); }

    void expectBothPainted(Child &program) const
    {
        expectPainted(program, at("left"));
        expectPainted(program, remote());
    }

    /// Waits until there is a client on the line.
    void waitForAClient() const
    {
        line.waitUntil([](Traffic const &traffic) { return traffic.open > 0; });
    }

    // No other test, and no user, has a shared connection under this name.
    std::string const alias = "tarnwick-e2e-" + std::to_string(::getpid());
    EngineRuntime engine;
    TestHost host{engine};
    DelayProxy line{host.address().port, {}};
    SSHClient client;
};

TEST_F(HostTest, foldersOfAHostAreWalkedThroughLikeLocalOnes)
{
    auto program = startWithHost();
    expectBothPainted(program);
    press({"Tab", "Down", "Return"});
    expectPainted(program, remote("first"));
    press({"Down", "Return"});
    expectPainted(program, remote("first/inner"));
    press({"BackSpace"});
    expectPainted(program, remote("first"));
    press({"BackSpace"});
    expectPainted(program, remote());
    // The cursor is on the folder that was left.
    press({"Return"});
    expectPainted(program, remote("first"));
    expectQuits(program);
}

TEST_F(HostTest, aHostIsChosenFromTheMenuOfThePaneAndOpensWhereALoginStarts)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"Tab"});
    // The menu opens on a later turn of the program's loop. The only host is the last item, however often it is chosen.
    pressUntilPainted(program, {"ctrl+k", "End", "Return"}, loginFolder());
    EXPECT_EQ(line.traffic().connections, 1U);
    expectQuits(program);
}

TEST_F(HostTest, escapeLeavesTheMenuAndThePaneHasTheKeyboard)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    pressUntilPainted(program, {"ctrl+k", "Escape", "Home", "Down", "Return"}, at("left/alpha"));
    EXPECT_EQ(line.traffic().connections, 0U);
    expectQuits(program);
}

TEST_F(HostTest, bothPanesOnAHostShareOneConnection)
{
    auto program = start({"--left", alias + ":" + remote("first"), "--right", alias + ":" + remote("second")});
    expectPainted(program, remote("first"));
    expectPainted(program, remote("second"));
    EXPECT_EQ(line.traffic().connections, 1U);
    expectQuits(program);
}

TEST_F(HostTest, whatIsNewOnAHostIsThereAfterARefreshThoughTheLineWasCut)
{
    auto program = start({"--left", alias + ":" + remote("second/of files"), "--right", at("right")});
    expectPainted(program, remote("second/of files"));
    line.cut();
    folder.folder("remote/second/of files/new");
    press({"ctrl+r"});
    // The new folder stands before the file. Until it does, Return meets the file, which does not open.
    pressUntilPainted(program, {"Home", "Down", "Return"}, remote("second/of files/new"));
    expectQuits(program);
}

TEST_F(HostTest, f7CreatesAFolderOnTheHostAndPutsTheCursorOnIt)
{
    auto program = start({"--left", alias + ":" + remote("second/of files"), "--right", at("right")});
    expectPainted(program, remote("second/of files"));
    press({"End", "F7"});
    answer("New folder", {"n", "e", "w", "Return"});
    // Until the folder is read again, Return meets the file, which does not open.
    pressUntilPainted(program, {"Return"}, remote("second/of files/new"));
    EXPECT_TRUE(std::filesystem::is_directory(remote("second/of files/new")));
    expectQuits(program);
}

TEST_F(HostTest, aNameThatIsThereOnTheHostIsAnErrorAndTheProgramGoesOn)
{
    auto program = startWithHost();
    expectBothPainted(program);
    press({"Tab", "F7"});
    answer("New folder", {"f", "i", "r", "s", "t", "Return"});
    answer("Operation failed", {"Return"});
    press({"Home", "Down", "Return"});
    expectPainted(program, remote("first"));
    expectQuits(program);
}

TEST_F(HostTest, aHostThatIsDeadHoldsUpNeitherTheOtherPaneNorTheEnd)
{
    line.stall();
    auto program = startWithHost();
    expectPainted(program, at("left"));
    waitForAClient();
    press({"Down", "Return"});
    expectPainted(program, at("left/alpha"));
    expectQuits(program);
}

TEST_F(HostTest, aHostThatDiesLeavesItsListingAndTheOtherPaneToWorkWith)
{
    auto program = startWithHost();
    expectBothPainted(program);
    press({"Tab"});
    line.stall();
    press({"ctrl+r", "Tab", "Down", "Return"});
    expectPainted(program, at("left/alpha"));
    expectQuits(program);
}

TEST_F(HostTest, aFolderSeenLastTimeIsThereAtTheNextStartThoughTheHostIsDead)
{
    {
        auto program = startWithHost();
        expectBothPainted(program);
        press({"Tab", "Down", "Return"});
        expectPainted(program, remote("first"));
        expectQuits(program);
    }
    line.stall();
    auto program = startWithHost();
    expectBothPainted(program);
    // The pane that was active last time is so again.
    press({"Down", "Return"});
    expectPainted(program, remote("first"));
    expectQuits(program);
}

TEST_F(HostTest, aHostThatIsGoneLeavesThePaneAtHome)
{
    host.stop();
    auto program = startWithHost();
    expectPainted(program, at("left"));
    expectPainted(program, at("home"));
    expectQuits(program);
}

TEST_F(HostTest, aHostWhoseKeyHasChangedIsNotTrusted)
{
    client.add(alias, host.address().through(line.port()), SSHClient::Knowledge::another);
    auto program = startWithHost();
    expectPainted(program, at("home"));
    expectQuits(program);
}

} // namespace

} // namespace tw::test
