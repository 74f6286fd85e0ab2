#include "tests/support/PaneTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using std::chrono_literals::operator""ms;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

/// Typing in a pane to find a name.
class PaneSearchTest : public PaneTest {
protected:
    PaneSearchTest() { show({"alpha", "beta", "core", "more", "read me", "reader", "zeta"}); }

    using Composition = PaneDisplay::Composition;
};

TEST_F(PaneSearchTest, lettersFindTheNameThatBeginsWithThemFromTheCursorOn)
{
    type("re");
    EXPECT_EQ(cursorName(), "read me");
    EXPECT_EQ(display.status, "search: re|");
    type("ade");
    EXPECT_EQ(cursorName(), "reader");
    EXPECT_EQ(display.beeps, 0);
}

TEST_F(PaneSearchTest, theCursorsOwnRowCountsAndTheSearchGoesRound)
{
    press(Key::end);
    type("z");
    EXPECT_EQ(cursorName(), "zeta");
    pass(3000ms);
    type("A");
    EXPECT_EQ(cursorName(), "alpha");
}

TEST_F(PaneSearchTest, withoutABeginningAPartIsFound)
{
    type("or");
    EXPECT_EQ(cursorName(), "core");
}

TEST_F(PaneSearchTest, theParentRowIsNeverFound)
{
    show({"a", ".."});
    type(".");
    EXPECT_THAT(display.status, HasSubstr("(no match)"));
}

TEST_F(PaneSearchTest, withoutAMatchTheCursorStaysAndItBeeps)
{
    type("rex");
    EXPECT_EQ(display.status, "search: rex|   (no match)");
    EXPECT_EQ(display.beeps, 1);
    EXPECT_EQ(cursorName(), "read me");
    press(Key::backspace);
    EXPECT_EQ(display.status, "search: re|");
}

TEST_F(PaneSearchTest, threeSecondsAfterTheLastKeyItEnds)
{
    type("r");
    pass(2999ms);
    type("e");
    pass(2999ms);
    EXPECT_TRUE(pane->isSearching());
    pass(1ms);
    EXPECT_FALSE(pane->isSearching());
    EXPECT_THAT(display.status, StartsWith("7 files"));
    EXPECT_EQ(cursorName(), "read me");
}

TEST_F(PaneSearchTest, backspaceDeletesAndWithTheLastCharacterTheSearchEnds)
{
    type("co");
    press(Key::backspace);
    EXPECT_EQ(display.status, "search: c|");
    press(Key::backspace);
    EXPECT_FALSE(pane->isSearching());
    EXPECT_THAT(display.status, StartsWith("7 files"));
    EXPECT_EQ(pane->requestedPath(), "/x");
    press(Key::backspace);
    EXPECT_EQ(pane->requestedPath(), "/");
}

TEST_F(PaneSearchTest, theCaretIsMovedByTheArrows)
{
    type("rad");
    press(Key::left);
    press(Key::left);
    type("e");
    EXPECT_EQ(display.status, "search: re|ad");
    EXPECT_EQ(cursorName(), "read me");
    press(Key::right);
    EXPECT_EQ(display.status, "search: rea|d");
    EXPECT_FALSE(pane->handleKey({.key = Key::left, .control = true, .text = {}}));
}

TEST_F(PaneSearchTest, aSpaceBelongsToARunningSearch)
{
    type("read");
    press(Key::space);
    EXPECT_EQ(display.status, "search: read |");
    EXPECT_EQ(cursorName(), "read me");
}

TEST_F(PaneSearchTest, theArrowsUpAndDownEndIt)
{
    type("re");
    press(Key::down);
    EXPECT_FALSE(pane->isSearching());
    EXPECT_EQ(cursorName(), "reader");
    EXPECT_THAT(display.status, StartsWith("7 files"));
}

TEST_F(PaneSearchTest, escapeEndsItAndTheMarksStay)
{
    press(Key::insert);
    type("re");
    press(Key::escape);
    EXPECT_FALSE(pane->isSearching());
    EXPECT_THAT(marked(), ElementsAre("alpha"));
    press(Key::escape);
    EXPECT_THAT(marked(), IsEmpty());
}

TEST_F(PaneSearchTest, aRangeOfMarksBeginsAtTheNameThatWasFound)
{
    type("more");
    press({.key = Key::down, .shift = true, .text = {}});
    EXPECT_THAT(marked(), ElementsAre("more", "read me"));
}

TEST_F(PaneSearchTest, arrivingInAFolderEndsIt)
{
    type("re");
    pane->navigate("/y");
    answer({"rest"});
    EXPECT_FALSE(pane->isSearching());
    EXPECT_THAT(display.status, StartsWith("1 files"));
}

TEST_F(PaneSearchTest, whatANewerListingHasIsFound)
{
    type("q");
    EXPECT_THAT(display.status, HasSubstr("(no match)"));
    pane->refresh();
    answer({"alpha", "query"});
    type("q");
    EXPECT_EQ(cursorName(), "query");
}

TEST_F(PaneSearchTest, withOtherKeysHeldNothingIsTyped)
{
    for (auto const &key :
         {KeyPress{.key = Key::character, .control = true, .text = "r"},
          KeyPress{.key = Key::character, .alt = true, .text = "r"},
          KeyPress{.key = Key::character, .meta = true, .text = "r"}, KeyPress{.key = Key::character, .text = "\x12"},
          KeyPress{.key = Key::character, .text = ""}})
        EXPECT_FALSE(press(key));
    EXPECT_FALSE(pane->isSearching());
    EXPECT_TRUE(press({.key = Key::character, .shift = true, .text = "R"}));
    EXPECT_EQ(cursorName(), "read me");
}

TEST_F(PaneSearchTest, whatIsComposedIsShownAndSearchedWhenItIsCommitted)
{
    show({"가방", "하늘", "한글"});
    pane->textComposed("하");
    EXPECT_EQ(display.status, "search: 하");
    EXPECT_EQ(cursorName(), "가방");
    pane->textComposed("한");
    pane->textTyped("한");
    EXPECT_EQ(display.status, "search: 한|");
    EXPECT_EQ(cursorName(), "한글");
    pane->textComposed("ㄱ");
    EXPECT_EQ(display.status, "search: 한ㄱ|");
}

TEST_F(PaneSearchTest, aCompositionThatIsGivenUpLeavesTheSummary)
{
    pane->textComposed("하");
    pane->textComposed("");
    EXPECT_FALSE(pane->isSearching());
    EXPECT_THAT(display.status, StartsWith("7 files"));
}

TEST_F(PaneSearchTest, anInputMethodThatComposesNothingStartsNoSearch)
{
    auto const before = display.status;
    pane->textComposed("");
    EXPECT_EQ(display.status, before);
}

TEST_F(PaneSearchTest, backspaceWhileComposingIsTheInputMethods)
{
    type("re");
    pane->textComposed("ㅎ");
    EXPECT_FALSE(press(Key::backspace));
    EXPECT_EQ(pane->requestedPath(), "/x");
    EXPECT_EQ(display.status, "search: reㅎ|");
}

TEST_F(PaneSearchTest, aSpaceAndAnArrowCommitWhatIsComposed)
{
    pane->textComposed("re");
    press(Key::space);
    EXPECT_EQ(display.status, "search: re |   (no match)");
    EXPECT_THAT(display.compositionEnds, ElementsAre(Composition::committed));
    press(Key::escape);
    pane->textComposed("re");
    press(Key::left);
    EXPECT_EQ(display.status, "search: r|e");
}

TEST_F(PaneSearchTest, anEndedSearchDiscardsWhatIsComposed)
{
    pane->textComposed("ㅎ");
    press(Key::escape);
    EXPECT_FALSE(pane->isSearching());
    EXPECT_THAT(display.compositionEnds, ElementsAre(Composition::discarded));
}

/// A folder with so many names that a worker folds them.
class LongPaneSearchTest : public PaneTest {
protected:
    LongPaneSearchTest()
    {
        for (int number = 10000; number < 15000; ++number)
            names.push_back("n" + std::to_string(number));
        show(names);
    }

    void letTheWorkerFold()
    {
        workers.drain();
        loop.drain();
    }

    std::vector<std::string> names;
};

TEST_F(LongPaneSearchTest, lettersThatAreTypedMeanwhileAreSearchedForWhenTheNamesAreFolded)
{
    type("n1234");
    EXPECT_EQ(display.status, "search: n1234|");
    EXPECT_EQ(cursorName(), "n10000");
    letTheWorkerFold();
    EXPECT_EQ(cursorName(), "n12340");
    type("5");
    EXPECT_EQ(cursorName(), "n12345") << "the names are folded once";
    type("x");
    EXPECT_EQ(display.status, "search: n12345x|   (no match)");
    EXPECT_EQ(display.beeps, 1);
}

TEST_F(LongPaneSearchTest, whatActsOnTheRowThatIsTypedForDoesNotWait)
{
    type("n14999");
    EXPECT_THAT(pane->operands().names, ElementsAre("n14999"));
    press(Key::escape);
    type("n12");
    press(Key::insert);
    EXPECT_THAT(marked(), ElementsAre("n12000"));
    letTheWorkerFold();
    EXPECT_EQ(cursorName(), "n12001") << "a late answer of the worker moves nothing";
}

TEST_F(LongPaneSearchTest, aClickIsNotUndoneByALateAnswer)
{
    type("n13");
    pane->rowClicked(7);
    letTheWorkerFold();
    EXPECT_EQ(pane->cursorRow(), 7);
}

TEST_F(LongPaneSearchTest, aSearchThatHasEndedFindsNothingMore)
{
    type("n13");
    press(Key::escape);
    EXPECT_EQ(cursorName(), "n13000") << "the key came after the letters";
    type("n11");
    pass(3000ms);
    letTheWorkerFold();
    EXPECT_EQ(cursorName(), "n13000");
    EXPECT_THAT(display.status, StartsWith("5000 files"));
}

TEST_F(LongPaneSearchTest, oneListingIsFoldedAtATimeAndTheNextSearchWaitsForItsTurn)
{
    for (int search = 0; search < 100; ++search) {
        type("n13");
        press(Key::escape);
    }
    type("n14");
    letTheWorkerFold();
    EXPECT_EQ(cursorName(), "n13000") << "the first work was called off";
    letTheWorkerFold();
    EXPECT_EQ(cursorName(), "n14000");
}

TEST_F(LongPaneSearchTest, aPaneMayCloseWhileItsNamesAreFolded)
{
    type("n13");
    pane.reset();
    letTheWorkerFold();
    EXPECT_EQ(display.status, "search: n13|");
}

TEST_F(PaneSearchTest, aPaneThatIsClosedMeanwhileHearsNothingOfItsTimer)
{
    type("r");
    pane.reset();
    pass(3000ms);
    EXPECT_EQ(display.status, "search: r|");
}

} // namespace
} // namespace tw::test
