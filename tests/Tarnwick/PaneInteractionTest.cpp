#include "tests/support/PaneTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// What a key or a command does to cursor and marks, on the files "1" to "7".
class PaneInteractionTest : public PaneTest {
protected:
    PaneInteractionTest() { show({"1", "2", "3", "4", "5", "6", "7"}); }

    bool shift(Key key) { return press({.key = key, .shift = true, .text = {}}); }

    bool control(Key key) { return press({.key = key, .control = true, .text = {}}); }

    /// What the pane leaves to its owner.
    void listen()
    {
        pane->callbacks.onNextTab = [this] { asked.emplace_back("next tab"); };
        pane->callbacks.onSwitchSide = [this] { asked.emplace_back("other side"); };
        pane->callbacks.onDeleteRequested = [this] { asked.emplace_back("delete"); };
        pane->callbacks.onPreviewRequested = [this] { asked.emplace_back("preview"); };
        pane->callbacks.onMaskWanted = [this](PaneModel::Marks change) {
            asked.emplace_back(change == PaneModel::Marks::insert ? "mark" : "unmark");
        };
    }

    std::vector<std::string> asked;
};

TEST_F(PaneInteractionTest, aRangeGrowsAndShrinksAndDropsOtherMarks)
{
    press(Key::insert);
    for (int i = 0; i < 3; ++i)
        shift(Key::down);
    EXPECT_THAT(marked(), ElementsAre("2", "3", "4", "5"));
    shift(Key::up);
    EXPECT_THAT(marked(), ElementsAre("2", "3", "4"));
}

TEST_F(PaneInteractionTest, whatIsForTheOwnerIsLeftToIt)
{
    listen();
    EXPECT_TRUE(press(Key::tab));
    EXPECT_TRUE(control(Key::tab));
    EXPECT_TRUE(control(Key::backspace));
    EXPECT_TRUE(press(Key::forwardDelete));
    EXPECT_TRUE(press(Key::space));
    EXPECT_TRUE(control(Key::keypadPlus));
    EXPECT_TRUE(press(Key::keypadMinus));
    EXPECT_THAT(asked, ElementsAre("other side", "next tab", "delete", "delete", "preview", "mark", "unmark"));
    EXPECT_EQ(pane->requestedPath(), "/x");
}

TEST_F(PaneInteractionTest, withoutAnOwnerForThemKeysGoOn)
{
    for (auto const key : {Key::tab, Key::forwardDelete, Key::space, Key::keypadPlus, Key::keypadMinus})
        EXPECT_FALSE(press(key));
    EXPECT_FALSE(control(Key::backspace));
}

TEST_F(PaneInteractionTest, arrowsWithAltAndBracketsWithControlGoThroughTheHistory)
{
    show({"other"});
    EXPECT_TRUE(press({.key = Key::left, .alt = true, .text = {}}));
    EXPECT_EQ(pane->requestedPath(), "/x");
    loop.drain();
    EXPECT_TRUE(control(Key::rightBracket));
    EXPECT_EQ(pane->requestedPath(), "/xx");
    EXPECT_TRUE(control(Key::leftBracket));
    EXPECT_EQ(pane->requestedPath(), "/x");
    EXPECT_FALSE(press({.key = Key::right, .control = true, .alt = true, .text = {}}));
    EXPECT_TRUE(press({.key = Key::right, .alt = true, .text = {}}));
    EXPECT_EQ(pane->requestedPath(), "/xx");
}

TEST_F(PaneInteractionTest, movingKeysWithOthersHeldAreNotHandled)
{
    for (auto const key : {Key::home, Key::end, Key::pageUp, Key::pageDown, Key::up, Key::down, Key::enter})
        EXPECT_FALSE(control(key));
    EXPECT_FALSE(shift(Key::enter));
    EXPECT_FALSE(press({.key = Key::backspace, .alt = true, .text = {}}));
    EXPECT_FALSE(control(Key::space));
    EXPECT_EQ(cursorName(), "1");
}

TEST_F(PaneInteractionTest, insertMarksWhateverIsHeldAndShiftWithSpaceDoesToo)
{
    press(Key::insert);
    control(Key::insert);
    shift(Key::space);
    EXPECT_THAT(marked(), ElementsAre("1", "2", "3"));
    EXPECT_EQ(cursorName(), "4");
    press(Key::end);
    press(Key::insert);
    EXPECT_EQ(cursorName(), "7") << "no row follows";
    press(Key::insert);
    EXPECT_THAT(marked(), ElementsAre("1", "2", "3"));
}

TEST_F(PaneInteractionTest, allRowsAreMarkedUnmarkedAndTurnedRound)
{
    pane->markAll(PaneModel::Marks::insert);
    EXPECT_EQ(marked().size(), 7U);
    EXPECT_THAT(display.status, HasSubstr("7 marked"));
    pane->markAll(PaneModel::Marks::remove);
    EXPECT_THAT(marked(), IsEmpty());
    press(Key::insert);
    pane->invertMarks();
    EXPECT_EQ(marked().size(), 6U);
}

TEST_F(PaneInteractionTest, aMaskMarksAndUnmarks)
{
    show({"a.txt", "b.md", "c.txt"});
    pane->markMatching("*.txt;*.c", PaneModel::Marks::insert);
    EXPECT_THAT(marked(), ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(display.status, HasSubstr("2 marked"));
    pane->markMatching("a*", PaneModel::Marks::remove);
    EXPECT_THAT(marked(), ElementsAre("c.txt"));
}

TEST_F(PaneInteractionTest, aMaskThatMatchesNothingSaysSo)
{
    press(Key::insert);
    pane->markMatching("*.none", PaneModel::Marks::insert);
    EXPECT_EQ(display.status, "nothing matched *.none");
    EXPECT_THAT(marked(), ElementsAre("1"));
}

TEST_F(PaneInteractionTest, aRangeAfterAMaskStartsAfresh)
{
    shift(Key::down);
    pane->markMatching("7", PaneModel::Marks::insert);
    shift(Key::down);
    EXPECT_THAT(marked(), ElementsAre("1", "2", "3"));
}

} // namespace
} // namespace tw::test
