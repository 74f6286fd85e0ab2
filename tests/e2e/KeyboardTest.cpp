#include "tests/e2e/ProgramTest.h"

#include <filesystem>

namespace tw::test {

namespace {

using KeyboardTest = ProgramTest;

TEST_F(KeyboardTest, returnOpensTheFolderUnderTheCursor)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"Down", "Return"});
    expectPainted(program, at("left/alpha"));
    press({"Down", "Return"});
    expectPainted(program, at("left/alpha/inner"));
    expectQuits(program);
}

TEST_F(KeyboardTest, returnOnTheParentRowGoesUp)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"End", "Home", "Return"});
    expectPainted(program, folder.path());
    expectQuits(program);
}

TEST_F(KeyboardTest, backspaceGoesUpAndLeavesTheCursorOnTheFolderThatItLeft)
{
    auto program = start({"--left", at("left/beta"), "--right", at("right")});
    expectPainted(program, at("left/beta"));
    press({"BackSpace"});
    expectPainted(program, at("left"));
    press({"Return"});
    expectPainted(program, at("left/beta"));
    expectQuits(program);
}

TEST_F(KeyboardTest, tabTakesTheKeysToTheOtherPaneAndBack)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"Tab", "Down", "Return"});
    expectPainted(program, at("right/gamma"));
    press({"Tab", "Down", "Return"});
    expectPainted(program, at("left/alpha"));
    expectQuits(program);
}

TEST_F(KeyboardTest, returnOnAFileStaysInTheFolder)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"End", "Return", "Home", "Down", "Return"});
    expectPainted(program, at("left/alpha"));
    expectQuits(program);
}

TEST_F(KeyboardTest, aHiddenFolderCanBeEnteredOnceItIsShown)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    // It sorts before all others.
    press({"ctrl+shift+period", "Home", "Down", "Return"});
    expectPainted(program, at("left/.hidden"));
    expectQuits(program);
}

TEST_F(KeyboardTest, aFolderThatIsNewOnDiskIsThereAfterARefresh)
{
    folder.file("right/gamma/file");
    auto program = start({"--left", at("right/gamma"), "--right", at("left")});
    expectPainted(program, at("right/gamma"));
    folder.folder("right/gamma/new");
    press({"ctrl+r"});
    // The new folder stands before the file. Until it does, Return meets the file, which does not open.
    pressUntilPainted(program, {"Home", "Down", "Return"}, at("right/gamma/new"));
    expectQuits(program);
}

TEST_F(KeyboardTest, f7CreatesAFolderAndPutsTheCursorOnIt)
{
    folder.file("right/gamma/file");
    auto program = start({"--left", at("right/gamma"), "--right", at("left")});
    expectPainted(program, at("right/gamma"));
    press({"End", "F7"});
    answer("New folder", {"n", "e", "w", "Return"});
    // Until the folder is read again, Return meets the file, which does not open.
    pressUntilPainted(program, {"Return"}, at("right/gamma/new"));
    EXPECT_TRUE(std::filesystem::is_directory(at("right/gamma/new")));
    expectQuits(program);
}

TEST_F(KeyboardTest, theProgramQuitsWhileItAsks)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"F7"});
    screen.pressIn("New folder", "ctrl+q");
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

TEST_F(KeyboardTest, theKeysThatOnlyMarkSortOrLayOutDoNotEndTheProgram)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"Insert", "shift+Down", "shift+End", "shift+space", "KP_Multiply", "Escape", "ctrl+backslash", "Prior",
           "Next", "ctrl+Left", "alt+F1", "Home", "Down", "Return"});
    expectPainted(program, at("left/alpha"));
    expectQuits(program);
}

} // namespace

} // namespace tw::test
