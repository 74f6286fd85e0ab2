#include "Tarnwick/Window/MainWindowCommands.h"

#include "Tarnwick/Commands/CommandTable.h"
#include "Tarnwick/Settings/Settings.h"
#include "tests/support/MainWindowControllerTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

class MainWindowCommandsTest : public MainWindowControllerTest {
protected:
    ~MainWindowCommandsTest() override { window.questions->close(); }

    void startOn(std::string const &leftPath, std::string const &rightPath)
    {
        start({.left = PaneSpec{"local", leftPath, true}, .right = PaneSpec{"local", rightPath, true}});
    }

    void perform(Command command)
    {
        commands.perform(command);
        loop.drain();
    }

    MainWindowCommands commands{controller};
};

TEST_F(MainWindowCommandsTest, everyCommandOfTheMainWindowThatIsNoKeyOfAPaneIsKnown)
{
    for (auto const &row : commandTable()) {
        auto const isExpected = !row.title.empty() && row.scope == CommandScope::mainWindow;
        EXPECT_EQ(commands.stateOf(row.command).has_value(), isExpected) << row.title;
    }
}

TEST_F(MainWindowCommandsTest, theCheckMarkOfHiddenFilesFollowsTheActivePane)
{
    startOn("/left", "/right");
    EXPECT_FALSE(commands.stateOf(Command::toggleHidden)->isChecked);
    perform(Command::toggleHidden);
    EXPECT_TRUE(commands.stateOf(Command::toggleHidden)->isChecked);
    controller.setActive(PaneSide::right);
    EXPECT_FALSE(commands.stateOf(Command::toggleHidden)->isChecked);
}

TEST_F(MainWindowCommandsTest, theEditorInATerminalIsChosenWithACheckMarkAndKept)
{
    startOn("/left", "/right");
    EXPECT_FALSE(commands.stateOf(Command::toggleEditInTerminal)->isChecked);
    perform(Command::toggleEditInTerminal);
    EXPECT_TRUE(commands.stateOf(Command::toggleEditInTerminal)->isChecked);
    EXPECT_EQ(Settings::editor.read(defaults), EditorChoice::terminal);
    EXPECT_EQ(left.status, "F4 opens $VISUAL or $EDITOR in a terminal");
    perform(Command::toggleEditInTerminal);
    EXPECT_FALSE(commands.stateOf(Command::toggleEditInTerminal)->isChecked);
    EXPECT_EQ(Settings::editor.read(defaults), EditorChoice::application);
    EXPECT_EQ(left.status, "F4 opens the application of the desktop");
}

TEST_F(MainWindowCommandsTest, backgroundWorkCanBeGoneToWhileThereIsAny)
{
    EXPECT_FALSE(commands.stateOf(Command::backgroundWork)->isEnabled);
    window.isWorking = true;
    EXPECT_TRUE(commands.stateOf(Command::backgroundWork)->isEnabled);
    perform(Command::backgroundWork);
    EXPECT_EQ(window.visitsToWork, 1);
}

TEST_F(MainWindowCommandsTest, backAndForwardAreOfferedWhereTheyLeadSomewhere)
{
    startOn("/left", "/right");
    auto const offers = [this](Command command) { return commands.stateOf(command)->isEnabled; };
    EXPECT_FALSE(offers(Command::back));
    EXPECT_FALSE(offers(Command::forward));
    provider->answersAtOnce = [&](std::string const &path) { return Listings{{path, listing(path, {})}}; };
    controller.activePane().navigate("/other");
    loop.drain();
    EXPECT_TRUE(offers(Command::back));
    perform(Command::back);
    EXPECT_EQ(controller.activePane().pathOnShow(), "/left");
    EXPECT_FALSE(offers(Command::back));
    EXPECT_TRUE(offers(Command::forward));
    perform(Command::forward);
    EXPECT_EQ(controller.activePane().pathOnShow(), "/other");
}

TEST_F(MainWindowCommandsTest, anOperationWorksOnWhatTheActivePaneShowsWhenItsKeyIsPressed)
{
    startOn("/left", "/right");
    controller.setActive(PaneSide::right);
    perform(Command::newFolder);
    controller.setActive(PaneSide::left);
    ASSERT_THAT(window.questions->prompts, SizeIs(1));
    EXPECT_EQ(window.questions->prompts.front().question.message, "Create in local:/right");
}

TEST_F(MainWindowCommandsTest, whatWorksOnFilesIsOfferedWhereThereAreSome)
{
    startOn("/left/below", "/right");
    for (auto const command : {Command::copyFiles, Command::moveFiles, Command::deleteFiles}) {
        controller.activePane().moveCursorTo(0);
        EXPECT_FALSE(commands.stateOf(command)->isEnabled) << "the folder above";
        controller.activePane().moveCursorTo(1);
        EXPECT_TRUE(commands.stateOf(command)->isEnabled);
    }
}

TEST_F(MainWindowCommandsTest, aCopyGoesToTheFolderInTheOtherPane)
{
    startOn("/left", "/right");
    controller.setActive(PaneSide::right);
    controller.activePane().moveCursorTo(1);
    perform(Command::copyFiles);
    ASSERT_THAT(window.questions->prompts, SizeIs(1));
    EXPECT_EQ(window.questions->prompts.front().question.initial, "/left");
    EXPECT_EQ(window.questions->prompts.front().question.message, "a\n\nfrom local:/right\nto local:");
}

TEST_F(MainWindowCommandsTest, theKeyOfAPaneDeletesInThatPane)
{
    startOn("/left", "/right");
    auto const &right = controller.pane(PaneSide::right);
    right->moveCursorTo(1);
    right->handleKey({.key = Key::forwardDelete, .text = {}});
    loop.drain();
    EXPECT_EQ(controller.activeSide(), PaneSide::right);
    EXPECT_EQ(this->right.status, "⚠︎ local is read-only");
}

TEST_F(MainWindowCommandsTest, aPaneThatShowsNothingYetHasNothingToWorkOn)
{
    perform(Command::newFolder);
    EXPECT_THAT(window.questions->prompts, IsEmpty());
}

TEST_F(MainWindowCommandsTest, theCommandsOfTabsActOnTheActiveSide)
{
    startOn("/left", "/right");
    controller.setActive(PaneSide::right);
    auto const &tabs = controller.container(PaneSide::right);
    perform(Command::newTab);
    perform(Command::newTab);
    EXPECT_EQ(tabs.tabCount(), 3U);
    EXPECT_EQ(controller.container(PaneSide::left).tabCount(), 1U);
    EXPECT_EQ(tabs.activeIndex(), 2U);
    perform(Command::nextTab);
    EXPECT_EQ(tabs.activeIndex(), 0U);
    perform(Command::previousTab);
    EXPECT_EQ(tabs.activeIndex(), 2U);
    perform(Command::tab2);
    EXPECT_EQ(tabs.activeIndex(), 1U);
    perform(Command::tab9);
    EXPECT_EQ(tabs.activeIndex(), 1U) << "there is none";
    perform(Command::closeTab);
    EXPECT_EQ(tabs.tabCount(), 2U);
    perform(Command::newTab);
    perform(Command::closeOtherTabs);
    EXPECT_EQ(tabs.tabCount(), 1U);
    EXPECT_EQ(window.closed, 0);
}

TEST_F(MainWindowCommandsTest, theWindowsOwnCommandsReachIt)
{
    perform(Command::equalizePanes);
    perform(Command::closeTab);
    perform(Command::minimizeWindow);
    perform(Command::customizeToolBar);
    perform(Command::customizeColumns);
    EXPECT_EQ(window.equalized, 1);
    EXPECT_EQ(window.closed, 1);
    EXPECT_EQ(window.minimized, 1);
    EXPECT_EQ(window.customized, 1);
    EXPECT_EQ(window.columnsCustomized, 1);
}

TEST_F(MainWindowCommandsTest, theOrderOfTheActivePaneIsCheckedAndCanBeTurnedRound)
{
    startOn("/left", "/right");
    EXPECT_TRUE(commands.stateOf(Command::sortByName)->isChecked);
    perform(Command::sortBySize);
    EXPECT_FALSE(commands.stateOf(Command::sortByName)->isChecked);
    EXPECT_TRUE(commands.stateOf(Command::sortBySize)->isChecked);
    auto const before = controller.activePane().model().viewOptions().ascending;
    perform(Command::sortBySize);
    EXPECT_NE(controller.activePane().model().viewOptions().ascending, before);
    controller.setActive(PaneSide::right);
    EXPECT_TRUE(commands.stateOf(Command::sortByName)->isChecked);
}

TEST_F(MainWindowCommandsTest, theTextGrowsAndShrinksWithinItsBounds)
{
    auto const sizeAfter = [this](Command command) {
        perform(command);
        return Settings::paneFontSize.read(defaults);
    };
    EXPECT_EQ(sizeAfter(Command::textBigger), 13);
    EXPECT_EQ(sizeAfter(Command::textActualSize), 12);
    EXPECT_EQ(sizeAfter(Command::textSmaller), 11);
    Settings::paneFontSize.write(defaults, 20);
    EXPECT_EQ(sizeAfter(Command::textBigger), 20);
    Settings::paneFontSize.write(defaults, 9);
    EXPECT_EQ(sizeAfter(Command::textSmaller), 9);
    EXPECT_EQ(sizeAfter(Command::textBigger), 10);
}

TEST_F(MainWindowCommandsTest, theOtherPaneGoesToThePathOfTheActiveOne)
{
    startOn("/left", "/right");
    perform(Command::targetIsSource);
    EXPECT_EQ(controller.pane(PaneSide::right)->requestedPath(), "/left");
    EXPECT_EQ(controller.pane(PaneSide::left)->requestedPath(), "/left");
    EXPECT_EQ(controller.activeSide(), PaneSide::left);
}

TEST_F(MainWindowCommandsTest, thePathUnderTheCursorIsCopied)
{
    startOn("/left", "/right");
    controller.activePane().moveCursorTo(1);
    perform(Command::copyFullPath);
    EXPECT_EQ(window.copiedText, "/left/a");
    EXPECT_EQ(left.status, "copied /left/a");
    perform(Command::copyRelativePath);
    EXPECT_EQ(window.copiedText, "../left/a");
}

TEST_F(MainWindowCommandsTest, ofTheRowOfTheFolderAboveThatFolderIsCopied)
{
    startOn("/left/below", "/right");
    controller.activePane().moveCursorTo(0);
    perform(Command::copyFullPath);
    EXPECT_EQ(window.copiedText, "/left");
}

TEST_F(MainWindowCommandsTest, whatIsCutLooksLikeItInEveryPaneUntilSomethingElseIsCopied)
{
    startOn("/left", "/left");
    auto const &other = controller.pane(PaneSide::right)->model();
    controller.activePane().moveCursorTo(1);
    perform(Command::clipboardCut);
    EXPECT_EQ(window.files->offered, (FileDrag{"local", "/left", {"a"}, true}));
    EXPECT_EQ(left.status, "1 item cut");
    EXPECT_TRUE(controller.activePane().model().isCut(1));
    EXPECT_TRUE(other.isCut(1));
    EXPECT_FALSE(other.isCut(0)) << "the row of the folder above";

    perform(Command::newTab);
    EXPECT_TRUE(controller.activePane().model().isCut(1)) << "in a pane that is new";

    auto const redraws = right.redraws;
    window.files->take();
    EXPECT_FALSE(other.isCut(1));
    EXPECT_GT(right.redraws, redraws);
}

TEST_F(MainWindowCommandsTest, whatIsCopiedStaysAsItLooks)
{
    startOn("/left", "/right");
    controller.activePane().moveCursorTo(1);
    perform(Command::clipboardCut);
    perform(Command::clipboardCopy);
    EXPECT_EQ(window.files->offered, (FileDrag{"local", "/left", {"a"}, false}));
    EXPECT_EQ(left.status, "1 item copied");
    EXPECT_FALSE(controller.activePane().model().isCut(1));
}

TEST_F(MainWindowCommandsTest, withoutAFileThereIsNothingToCopy)
{
    startOn("/left", "/right");
    controller.activePane().moveCursorTo(0);
    perform(Command::clipboardCopy);
    EXPECT_EQ(window.files->offered, std::nullopt);
    EXPECT_EQ(left.beeps, 1);
}

TEST_F(MainWindowCommandsTest, filesAreEditedAndNothingElse)
{
    controller.start({.left = PaneSpec{"local", "/left", true}, .right = PaneSpec{"local", "/right", true}});
    loop.drain();
    while (!provider->waiting.empty()) {
        auto const request = provider->takeOldest();
        request.answer->succeed({{request.path, listing(request.path, {directory("a"), file("b")}, clock->now())}});
        loop.drain();
    }
    for (auto const row : {0, 1}) { // the row of the folder above, and a folder
        controller.activePane().moveCursorTo(row);
        perform(Command::edit);
        EXPECT_EQ(left.beeps, row + 1);
    }
    controller.activePane().moveCursorTo(2);
    perform(Command::edit);
    ASSERT_THAT(applications->opened, SizeIs(1));
    EXPECT_EQ(applications->opened[0].path, "/left/b");
    EXPECT_EQ(left.beeps, 2);
}

TEST_F(MainWindowCommandsTest, onlyFilesOfTheSameFolderAndConnectionLookCut)
{
    startOn("/left", "/right");
    controller.activePane().moveCursorTo(1);
    perform(Command::clipboardCut);
    EXPECT_FALSE(controller.pane(PaneSide::right)->model().isCut(1));
    auto const cut = std::make_shared<CutFiles const>(CutFiles{"web1", "/left", {"a"}});
    controller.activePane().showCut(cut);
    EXPECT_FALSE(controller.activePane().model().isCut(1));
}

} // namespace
} // namespace tw::test
