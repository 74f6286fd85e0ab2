#include "tests/e2e/HostTest.h"

namespace tw::test {

namespace {

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
