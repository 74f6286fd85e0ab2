#include "tests/support/PaneControllerTest.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Browsing/LocalProviderError.h"
#include "Tarnwick/Panes/PaneSpec.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace tw::test {
namespace {

using std::chrono::milliseconds;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

TEST_F(PaneControllerTest, thePathIsShownAtOnceAndTheListingWhenItIsThere)
{
    navigate("/srv");
    EXPECT_EQ(display.path, "/srv");
    EXPECT_EQ(pane->requestedPath(), "/srv");
    EXPECT_EQ(pane->pathOnShow(), "/");
    answer("/srv", {directory("a"), file("b")});
    EXPECT_EQ(pane->pathOnShow(), "/srv");
    EXPECT_THAT(visible(), ElementsAre("a", "b"));
    EXPECT_EQ(display.cursorRow, 0);
}

TEST_F(PaneControllerTest, theOldListingStaysUntilTheNewOneIsThere)
{
    show("/old", {file("a")});
    navigate("/new");
    EXPECT_THAT(visible(), ElementsAre("a"));
    EXPECT_EQ(pane->pathOnShow(), "/old");
}

TEST_F(PaneControllerTest, ofTwoQuickNavigationsTheSecondShowsWhicheverAnswersFirst)
{
    navigate("/first");
    navigate("/second");
    answer("/second", {file("two")});
    answer("/first", {file("one")});
    EXPECT_THAT(visible(), ElementsAre("two"));
    EXPECT_EQ(display.path, "/second");

    navigate("/third");
    navigate("/fourth");
    answer("/third", {file("three")});
    EXPECT_THAT(visible(), ElementsAre("two"));
    answer("/fourth", {file("four")});
    EXPECT_THAT(visible(), ElementsAre("four"));
}

TEST_F(PaneControllerTest, aLateFailureIsDropped)
{
    navigate("/first");
    navigate("/second");
    answer("/second", {file("two")});
    answerError("/first", "too late");
    EXPECT_EQ(display.noticeText(), "");
}

TEST_F(PaneControllerTest, aFailureLeavesListingCursorAndMarksAndTheStripSaysWhy)
{
    show("/srv", {file("a"), file("b"), file("c")});
    press(Key::insert);
    press(Key::insert);
    navigate("/locked");
    answerError("/locked", "Permission denied");
    EXPECT_THAT(display.noticeText(), HasSubstr("Permission denied"));
    EXPECT_THAT(display.status, StartsWith("3 files, 0 dirs"));
    EXPECT_THAT(visible(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(pane->pathOnShow(), "/srv");
    EXPECT_EQ(pane->cursorName(), "b");
    EXPECT_THAT(marked(), ElementsAre("a"));
}

TEST_F(PaneControllerTest, aGoodNavigationAfterAFailureLeavesNoWarning)
{
    show("/srv", {file("a")});
    navigate("/bad");
    answerError("/bad", "gone");
    EXPECT_NE(display.noticeText(), "");
    show("/good", {file("b")});
    EXPECT_EQ(display.noticeText(), "");
    EXPECT_THAT(display.status, StartsWith("1 files, 0 dirs"));
}

TEST_F(PaneControllerTest, aFileOpenedAsAFolderIsNoDirectory)
{
    show("/srv", {symlink("link")});
    press(Key::end);
    press(Key::enter);
    take("/srv/link").answer->succeed({});
    loop.drain();
    EXPECT_THAT(display.noticeText(), HasSubstr("/srv/link is not a folder"));
}

TEST_F(PaneControllerTest, aLinkToAFileIsOpenedAsAFile)
{
    show("/srv", {symlink("link")});
    press(Key::end);
    auto const openWith = [&](std::exception_ptr const &failure) {
        press(Key::enter);
        take("/srv/link").answer->fail(failure);
        loop.drain();
    };
    openWith(std::make_exception_ptr(FileOperationError::Failed("list", "/srv/link", "not a folder")));
    EXPECT_EQ(display.beeps, 1) << "nobody opens files";
    EXPECT_THAT(display.noticeText(), HasSubstr("not a folder"));
    EXPECT_EQ(pane->pathOnShow(), "/srv");

    std::vector<std::string> opened;
    pane->callbacks.onOpenFile = [&](std::string path) { opened.push_back(std::move(path)); };
    openWith(std::make_exception_ptr(LocalProviderError::CannotOpen("/srv/link", ENOTDIR)));
    openWith(std::make_exception_ptr(LocalProviderError::CannotOpen("/srv/link", ENOENT)));
    EXPECT_THAT(opened, ElementsAre("/srv/link"));
    EXPECT_EQ(display.beeps, 1);
}

TEST_F(PaneControllerTest, rowsOfALongListingComeWhileItIsRead)
{
    show("/srv", {file("a")});
    navigate("/long");
    auto const arrive = [&](std::vector<ListedEntry> const &rows) {
        provider->partTakers.back()(listing("/long", rows, clock->now(), Completeness::truncated));
        loop.drain();
    };
    arrive({file("b"), file("c")});
    EXPECT_THAT(visible(), ElementsAre("b", "c"));
    EXPECT_EQ(pane->pathOnShow(), "/long");
    EXPECT_THAT(display.status, AllOf(HasSubstr("2 files"), HasSubstr("reading"), Not(HasSubstr("truncated"))));

    press(Key::end);
    press(Key::insert);
    press(Key::end);
    arrive({file("b"), file("c"), file("d")});
    EXPECT_EQ(pane->cursorName(), "c") << "the cursor stays on its file";
    auto const beeps = display.beeps;
    press(Key::keypadTimes);
    EXPECT_EQ(display.beeps, beeps + 1) << "marks cannot be turned round in a part";
    EXPECT_THAT(display.status, HasSubstr("still being read"));
    EXPECT_THAT(marked(), ElementsAre("c"));

    answer("/long", {file("a"), file("b"), file("c"), file("d"), file("e")});
    EXPECT_THAT(visible(), ElementsAre("a", "b", "c", "d", "e"));
    EXPECT_THAT(display.status, Not(HasSubstr("reading")));
    EXPECT_EQ(pane->cursorName(), "c");
    EXPECT_THAT(marked(), ElementsAre("c"));
    press(Key::keypadTimes);
    EXPECT_THAT(marked(), ElementsAre("a", "b", "d", "e"));
}

TEST_F(PaneControllerTest, aFolderThatIsReadAnewKeepsItsRowsUntilTheNewOnesAreWhole)
{
    show("/srv", {file("a"), file("b")});
    pane->refresh();
    loop.drain();
    provider->partTakers.back()(listing("/srv", {file("a")}, clock->now(), Completeness::truncated));
    loop.drain();
    EXPECT_THAT(visible(), ElementsAre("a", "b"));
}

TEST_F(PaneControllerTest, aPartOfAFolderThatTheUserHasLeftIsDropped)
{
    show("/srv", {file("a")});
    navigate("/long");
    auto const late = provider->partTakers.back();
    show("/other", {file("o")});
    late(listing("/long", {file("b")}, clock->now(), Completeness::truncated));
    loop.drain();
    EXPECT_EQ(pane->pathOnShow(), "/other");
}

TEST_F(PaneControllerTest, aFirstFolderThatCannotBeOpenedLeadsHomeAndStillSaysWhy)
{
    auto const home = PaneSpec::localHome().path;
    navigate("/missing");
    answerError("/missing", "No such file or directory");
    EXPECT_THAT(display.noticeText(), HasSubstr("No such file or directory"));
    answer(home, {file("a")});
    EXPECT_THAT(display.noticeText(), HasSubstr("No such file or directory"));
    EXPECT_EQ(pane->pathOnShow(), home);
}

TEST_F(PaneControllerTest, withoutAHomeTheFirstFolderIsTheRoot)
{
    auto const home = PaneSpec::localHome().path;
    navigate("/missing");
    answerError("/missing", "first reason");
    answerError(home, "second reason");
    answer("/", {file("vmlinuz")});
    EXPECT_THAT(display.noticeText(), HasSubstr("first reason"));
    EXPECT_EQ(pane->pathOnShow(), "/");
    navigate("/missing");
    answerError("/missing", "again");
    EXPECT_THAT(provider->waiting, IsEmpty()) << "with a listing on show, it stays";
}

TEST_F(PaneControllerTest, aNameWithLineEndsIsToldOnOneLine)
{
    show("/srv", {file("a")});
    navigate("/srv/two\nlines\xff");
    EXPECT_EQ(display.path, "/srv/two␊lines\uFFFD");
    EXPECT_EQ(pane->requestedPath(), "/srv/two\nlines\xff");
    take("/srv/two\nlines\xff").answer->succeed({});
    loop.drain();
    EXPECT_THAT(display.noticeText(), HasSubstr("/srv/two␊lines\uFFFD is not a folder"));
}

TEST_F(PaneControllerTest, aFastAnswerShowsNoSpinner)
{
    navigate("/srv");
    clock->advance(milliseconds(119));
    loop.drain();
    EXPECT_FALSE(display.isSpinning);
    answer("/srv", {file("a")});
    clock->advance(milliseconds(500));
    loop.drain();
    EXPECT_FALSE(display.isSpinning);
}

TEST_F(PaneControllerTest, aSlowAnswerShowsASpinnerUntilItComes)
{
    navigate("/srv");
    clock->advance(milliseconds(120));
    loop.drain();
    EXPECT_TRUE(display.isSpinning);
    answer("/srv", {file("a")});
    EXPECT_FALSE(display.isSpinning);

    navigate("/bad");
    clock->advance(milliseconds(120));
    loop.drain();
    EXPECT_TRUE(display.isSpinning);
    answerError("/bad", "gone");
    EXPECT_FALSE(display.isSpinning);
}

TEST_F(PaneControllerTest, anOldAnswerDoesNotStopTheSpinnerOfANewerNavigation)
{
    navigate("/first");
    navigate("/second");
    clock->advance(milliseconds(120));
    loop.drain();
    answer("/first", {file("one")});
    EXPECT_TRUE(display.isSpinning);
    answer("/second", {file("two")});
    EXPECT_FALSE(display.isSpinning);
}

TEST_F(PaneControllerTest, theStatusTellsCountsSizeMarksAndTiming)
{
    navigate("/srv");
    clock->advance(milliseconds(87));
    answer("/srv", {directory("d"), file("a", 1024), file("b", 512)});
    EXPECT_EQ(display.status, "2 files, 1 dirs  ·  1.5K   ·  87 ms disk");
    press(Key::end);
    press(Key::insert);
    EXPECT_EQ(display.status, "2 files, 1 dirs  ·  1.5K   ▸ 1 marked (512)   ·  87 ms disk");
    navigate("/srv");
    EXPECT_EQ(display.status, "2 files, 1 dirs  ·  1.5K   ·  0.00 ms cached");
}

TEST_F(PaneControllerTest, theStatusTellsATruncatedListing)
{
    navigate("/srv");
    answer("/srv", {file("a")}, Completeness::truncated);
    EXPECT_EQ(display.status, "1 files, 0 dirs   ⚠︎ listing truncated   ·  0 ms disk");
}

TEST_F(PaneControllerTest, theStatusOfAnEmptyFolderTellsNoSize)
{
    show("/srv", {});
    EXPECT_EQ(display.status, "0 files, 0 dirs   ·  0 ms disk");
}

TEST_F(PaneControllerTest, returnOnAFolderEntersItAndOnTheParentRowLeavesIt)
{
    show("/srv", {directory("a"), file("b")});
    press(Key::down);
    auto const ahead = take("/srv/a"); // of the cursor's folder
    press(Key::enter);
    answer("/srv/a", {file("x")});
    EXPECT_EQ(pane->pathOnShow(), "/srv/a");
    EXPECT_EQ(pane->cursorRow(), 0);
    press(Key::enter);
    EXPECT_EQ(pane->pathOnShow(), "/srv");
    EXPECT_EQ(pane->cursorName(), "a");
}

TEST_F(PaneControllerTest, backspaceGoesUpWithTheCursorOnTheFolderJustLeft)
{
    show("/a/b", {file("x")});
    press(Key::backspace);
    answer("/a", {directory("0"), directory("b"), directory("c")});
    EXPECT_EQ(pane->pathOnShow(), "/a");
    EXPECT_EQ(pane->cursorName(), "b");
    EXPECT_EQ(display.cursorRow, 2);
}

TEST_F(PaneControllerTest, theRootHasNoFolderAboveIt)
{
    show("/", {directory("usr")});
    press(Key::backspace);
    EXPECT_TRUE(handled);
    EXPECT_EQ(pane->pathOnShow(), "/");
    EXPECT_EQ(pane->cursorName(), "usr");
}

TEST_F(PaneControllerTest, goingUpFromBelowTheRootReachesIt)
{
    show("/usr", {});
    press(Key::backspace);
    answer("/", {directory("bin"), directory("usr")});
    EXPECT_EQ(pane->cursorName(), "usr");
}

TEST_F(PaneControllerTest, aFolderRemembersItsCursor)
{
    show("/srv", {file("a"), file("b"), file("c")});
    press(Key::end);
    display.firstRow = 2;
    show("/other", {file("x")});
    EXPECT_EQ(display.firstRow, 0);
    navigate("/srv");
    EXPECT_EQ(pane->cursorName(), "c");
    EXPECT_EQ(display.firstRow, 2);
}

TEST_F(PaneControllerTest, theParentRowIsNotRemembered)
{
    show("/srv", {file("a"), file("b")});
    press(Key::end);
    show("/other", {});
    navigate("/srv");
    press(Key::home);
    navigate("/other");
    navigate("/srv");
    EXPECT_EQ(pane->cursorName(), "b");
}

TEST_F(PaneControllerTest, returnOnAFileIsForItsOwner)
{
    show("/srv", {file("a")});
    press(Key::end);
    press(Key::enter);
    EXPECT_EQ(display.beeps, 1) << "with nobody to open it";
    std::string opened;
    pane->callbacks.onOpenFile = [&](std::string path) { opened = std::move(path); };
    press(Key::enter);
    EXPECT_EQ(opened, "/srv/a");
    EXPECT_EQ(pane->pathOnShow(), "/srv");
}

TEST_F(PaneControllerTest, aNameThatIsNoTextIsOpenedByItsBytes)
{
    show("/srv", {directory("\xff\xfe")});
    press(Key::end);
    press(Key::enter);
    EXPECT_EQ(take("/srv/\xff\xfe").depth, 1);
}

TEST_F(PaneControllerTest, theMovingKeysAreClampedToTheTable)
{
    std::vector<ListedEntry> rows;
    for (int index = 10; index < 60; ++index)
        rows.push_back(file(std::to_string(index)));
    show("/srv", rows);
    auto const after = [&](Key key) {
        press(key);
        return *display.cursorRow;
    };
    EXPECT_EQ(after(Key::up), 0);
    EXPECT_EQ(after(Key::down), 1);
    EXPECT_EQ(after(Key::pageDown), 10) << "a page of 10 whole rows moves by 9";
    EXPECT_EQ(after(Key::pageUp), 1);
    EXPECT_EQ(after(Key::pageUp), 0);
    EXPECT_EQ(after(Key::end), 50);
    EXPECT_EQ(after(Key::down), 50);
    EXPECT_EQ(after(Key::pageDown), 50);
    EXPECT_EQ(after(Key::home), 0);
}

TEST_F(PaneControllerTest, aPageIsAtLeastOneRow)
{
    display.wholeRows = 0;
    show("/srv", {file("a"), file("b")});
    press(Key::pageDown);
    EXPECT_EQ(display.cursorRow, 1);
}

TEST_F(PaneControllerTest, insertMarksAndMovesOnAndStaysOnTheLastRow)
{
    show("/srv", {file("a"), file("b")});
    press(Key::insert);
    EXPECT_THAT(marked(), IsEmpty()) << "the parent row cannot be marked";
    press(Key::insert);
    press(shifted(Key::space));
    EXPECT_THAT(marked(), ElementsAre("a", "b"));
    EXPECT_EQ(pane->cursorName(), "b");
    press(Key::insert);
    EXPECT_THAT(marked(), ElementsAre("a"));
    EXPECT_GT(display.redraws, 0);
}

TEST_F(PaneControllerTest, shiftWithAnArrowMarksARangeThatGrowsAndShrinks)
{
    show("/srv", {file("1"), file("2"), file("3"), file("4"), file("5")});
    press(Key::down);
    press(Key::down);
    press(shifted(Key::down));
    press(shifted(Key::down));
    press(shifted(Key::down));
    EXPECT_THAT(marked(), ElementsAre("2", "3", "4", "5"));
    press(shifted(Key::up));
    EXPECT_THAT(marked(), ElementsAre("2", "3", "4"));
    press(shifted(Key::home));
    EXPECT_THAT(marked(), ElementsAre("1", "2"));
}

TEST_F(PaneControllerTest, escapeUnmarksAll)
{
    show("/srv", {file("a"), file("b")});
    press(shifted(Key::end));
    EXPECT_EQ(marked().size(), 2U);
    press(Key::escape);
    EXPECT_THAT(marked(), IsEmpty());
    EXPECT_THAT(display.status, Not(HasSubstr("marked")));
}

TEST_F(PaneControllerTest, theKeypadsTimesInvertsTheMarks)
{
    show("/srv", {file("a"), file("b")});
    press(Key::down);
    press(Key::insert);
    press(Key::keypadTimes);
    EXPECT_THAT(marked(), ElementsAre("b"));
}

TEST_F(PaneControllerTest, tabAsksForTheOtherSide)
{
    int switches = 0;
    pane->callbacks.onSwitchSide = [&] { ++switches; };
    press(Key::tab);
    EXPECT_EQ(switches, 1);
    press({.key = Key::tab, .control = true, .text = {}});
    EXPECT_EQ(switches, 1);
    EXPECT_FALSE(handled);
}

TEST_F(PaneControllerTest, keysThatMeanNothingHereAreLeftToOthers)
{
    show("/srv", {file("a")});
    press({.key = Key::enter, .control = true, .text = {}});
    EXPECT_FALSE(handled);
    press({.key = Key::character, .control = true, .text = "x"});
    EXPECT_FALSE(handled);
    press(Key::left);
    EXPECT_FALSE(handled);
    press({.key = Key::home, .alt = true, .text = {}});
    EXPECT_FALSE(handled);
}

TEST_F(PaneControllerTest, keysInAPaneWithoutAListingDoNothing)
{
    for (auto const key : {Key::up, Key::down, Key::home, Key::end, Key::pageUp, Key::pageDown, Key::enter,
                           Key::backspace, Key::insert, Key::escape, Key::keypadTimes}) {
        press(key);
        press(shifted(key));
    }
    EXPECT_EQ(display.cursorRow, std::nullopt);
    EXPECT_THAT(provider->waiting, IsEmpty());
}

TEST_F(PaneControllerTest, marksAreDroppedByANavigationAndKeptWhereAskedFor)
{
    show("/srv", {file("a"), file("b")});
    press(shifted(Key::end));
    navigate("/srv", {}, PaneController::MarksAfter::kept);
    EXPECT_THAT(marked(), ElementsAre("a", "b"));
    navigate("/srv");
    EXPECT_THAT(marked(), IsEmpty());
}

TEST_F(PaneControllerTest, refreshReadsAgainAndKeepsCursorMarksAndScroll)
{
    show("/srv", {file("a"), file("b"), file("c")});
    press(shifted(Key::end));
    press(Key::up);
    display.firstRow = 1;
    pane->refresh();
    loop.drain();
    answer("/srv", {file("a"), file("b"), file("new")});
    EXPECT_THAT(visible(), ElementsAre("a", "b", "new"));
    EXPECT_EQ(pane->cursorName(), "b");
    EXPECT_THAT(marked(), ElementsAre("a", "b")) << "a mark on what went is gone";
    EXPECT_EQ(display.firstRow, 1);
    EXPECT_THAT(display.status, HasSubstr("disk"));
}

TEST_F(PaneControllerTest, refreshOnTheParentRowStaysThere)
{
    show("/srv", {file("a"), file("b")});
    press(Key::end);
    show("/other", {});
    navigate("/srv");
    press(Key::home);
    pane->refresh();
    loop.drain();
    answer("/srv", {file("a"), file("b")});
    EXPECT_EQ(display.cursorRow, 0);
}

TEST_F(PaneControllerTest, aRefreshDoesNotPullTheUserBack)
{
    show("/srv", {file("a")});
    pane->refresh();
    pane->refresh();
    pane->navigate("/other");
    loop.drain();
    answer("/srv", {file("a")});
    answer("/other", {file("x")});
    EXPECT_EQ(pane->pathOnShow(), "/other");
    EXPECT_THAT(provider->waiting, IsEmpty());
}

TEST_F(PaneControllerTest, aHeldRefreshReadsTheFolderOnceMoreWhenItHasBeenRead)
{
    show("/srv", {file("a")});
    auto const before = provider->fetches;
    for (int repeat = 0; repeat < 100; ++repeat) {
        pane->refresh();
        loop.drain();
    }
    EXPECT_EQ(provider->fetches, before + 1);
    answer("/srv", {file("b")});
    EXPECT_THAT(visible(), ElementsAre("b"));
    EXPECT_EQ(provider->fetches, before + 2);
    answer("/srv", {file("c")});
    EXPECT_THAT(visible(), ElementsAre("c"));
    EXPECT_EQ(provider->fetches, before + 2);
    pane->refresh();
    loop.drain();
    answer("/srv", {file("d")});
    EXPECT_THAT(visible(), ElementsAre("d")) << "and the next press reads it again";
}

TEST_F(PaneControllerTest, aRefreshInAnotherFolderDoesNotWaitForOneThatHangs)
{
    show("/srv", {file("a")});
    show("/other", {file("b")});
    navigate("/srv");
    pane->refresh();
    loop.drain();
    navigate("/other");
    pane->refresh();
    loop.drain();
    ASSERT_EQ(provider->waiting.size(), 2U);
    answer("/srv", {file("late")});
    answer("/other", {file("new")});
    EXPECT_THAT(visible(), ElementsAre("new"));
}

TEST_F(PaneControllerTest, aListingFoundToDifferIsShownInPlace)
{
    show("/srv", {file("a"), file("b"), file("c")});
    press(Key::down);
    press(Key::insert);
    display.firstRow = 1;
    loop.start(browser->refresh("/srv"));
    loop.drain();
    answer("/srv", {file("0"), file("a"), file("b")});
    EXPECT_THAT(visible(), ElementsAre("0", "a", "b"));
    EXPECT_EQ(pane->cursorName(), "b");
    EXPECT_EQ(display.firstRow, 1);
    EXPECT_THAT(marked(), ElementsAre("a"));
    EXPECT_THAT(display.status, StartsWith("3 files, 0 dirs"));
}

TEST_F(PaneControllerTest, aMarkOnAFileThatWentIsNotCountedAndItsCursorGoesToItsNeighbour)
{
    show("/srv", {file("a"), file("b")});
    press(Key::end);
    press(Key::insert);
    loop.start(browser->refresh("/srv"));
    loop.drain();
    answer("/srv", {file("a")});
    EXPECT_THAT(marked(), IsEmpty());
    EXPECT_THAT(display.status, Not(HasSubstr("marked")));
    EXPECT_EQ(pane->cursorName(), "a");
}

TEST_F(PaneControllerTest, aNewerListingOfAnotherFolderIsNotShown)
{
    show("/one", {file("a")});
    show("/two", {file("b")});
    loop.start(browser->refresh("/one"));
    loop.drain();
    answer("/one", {file("changed")});
    EXPECT_THAT(visible(), ElementsAre("b"));
}

TEST_F(PaneControllerTest, theCursorOnAFolderWarmsIt)
{
    show("/srv", {directory("a"), file("b")});
    press(Key::down);
    ASSERT_EQ(provider->waiting.size(), 1U);
    EXPECT_EQ(provider->waiting[0].path, "/srv/a");
    EXPECT_EQ(provider->waiting[0].priority, FetchPriority::background);
    press(Key::down);
    EXPECT_EQ(provider->waiting.size(), 1U) << "a file needs none";
}

TEST_F(PaneControllerTest, aColumnSortsAndTurnsRound)
{
    show("/srv", {file("a", 1), file("b", 3), file("c", 2)});
    press(Key::end);
    pane->toggleSort(SortKey::size);
    EXPECT_THAT(visible(), ElementsAre("b", "c", "a"));
    EXPECT_EQ(display.sortKey, SortKey::size);
    EXPECT_FALSE(display.ascending);
    EXPECT_EQ(pane->cursorName(), "c");
    EXPECT_EQ(display.cursorRow, 2);
    pane->toggleSort(SortKey::size);
    EXPECT_THAT(visible(), ElementsAre("a", "c", "b"));
    pane->toggleSort(SortKey::date);
    EXPECT_FALSE(display.ascending);
    pane->toggleSort(SortKey::ext);
    EXPECT_TRUE(display.ascending);
    pane->toggleSort(SortKey::name);
    EXPECT_TRUE(display.ascending);
    EXPECT_EQ(pane->cursorName(), "c");
}

TEST_F(PaneControllerTest, hiddenFilesComeAndGoUnderTheCursor)
{
    show("/srv", {file(".profile"), file("a"), file("b")});
    press(Key::end);
    EXPECT_THAT(visible(), ElementsAre("a", "b"));
    pane->toggleHidden();
    EXPECT_THAT(visible(), ElementsAre(".profile", "a", "b"));
    EXPECT_EQ(pane->cursorName(), "b");
    EXPECT_THAT(display.status, StartsWith("3 files"));
}

TEST_F(PaneControllerTest, aClickMovesTheCursorAndUnmarks)
{
    show("/srv", {file("a"), file("b"), file("c")});
    press(shifted(Key::end));
    pane->rowClicked(2);
    EXPECT_EQ(pane->cursorName(), "b");
    EXPECT_THAT(marked(), IsEmpty());
    pane->rowClicked(99);
    pane->rowClicked(-1);
    EXPECT_EQ(pane->cursorName(), "b");
}

TEST_F(PaneControllerTest, aClickWithControlTurnsAMarkRoundAndLeavesTheOthers)
{
    show("/srv", {file("a"), file("b"), file("c")});
    pane->rowClicked(1, {.control = true});
    pane->rowClicked(3, {.control = true});
    EXPECT_THAT(marked(), ElementsAre("a", "c"));
    EXPECT_EQ(pane->cursorName(), "c");
    EXPECT_THAT(display.status, HasSubstr("2 marked"));
    pane->rowClicked(1, {.control = true});
    EXPECT_THAT(marked(), ElementsAre("c"));
    pane->rowClicked(99, {.control = true});
    EXPECT_THAT(marked(), ElementsAre("c"));
}

TEST_F(PaneControllerTest, aClickWithShiftMarksFromWhereTheLastOneWas)
{
    show("/srv", {file("a"), file("b"), file("c"), file("d")});
    pane->rowClicked(4, {.control = true});
    pane->rowClicked(2, {.shift = true});
    EXPECT_THAT(marked(), ElementsAre("b", "c", "d"));
    EXPECT_EQ(pane->cursorName(), "b");
    pane->rowClicked(3, {.shift = true});
    EXPECT_THAT(marked(), ElementsAre("c", "d")) << "the range shrinks with the cursor";
    pane->rowClicked(1);
    pane->rowClicked(4, {.control = true});
    pane->rowClicked(1);
    EXPECT_THAT(marked(), IsEmpty());
}

TEST_F(PaneControllerTest, withShiftAndControlARangeIsAdded)
{
    show("/srv", {file("a"), file("b"), file("c"), file("d")});
    pane->rowClicked(1, {.control = true});
    pane->rowClicked(3, {.control = true});
    pane->rowClicked(4, {.shift = true, .control = true});
    EXPECT_THAT(marked(), ElementsAre("a", "c", "d"));
}

TEST_F(PaneControllerTest, aDoubleClickOpens)
{
    show("/srv", {directory("a")});
    pane->rowDoubleClicked(1);
    loop.drain();
    EXPECT_EQ(pane->requestedPath(), "/srv/a");
    pane->rowDoubleClicked(99);
}

TEST_F(PaneControllerTest, aPaneThatIsClosedIsNotKeptAliveByItsOwnQuestion)
{
    pane->navigate("/srv");
    loop.drain();
    std::weak_ptr<PaneController> const gone = pane;
    pane->detach(display);
    pane.reset();
    EXPECT_TRUE(gone.expired());
    answer("/srv", {file("a")});
}

TEST_F(PaneControllerTest, operandsStayWhatTheyWereAtTheKeyPressWhateverThePaneDoesAfterwards)
{
    show("/srv", {file("a"), file("b")});
    press(shifted(Key::end));
    auto const operands = pane->operands();
    press(Key::escape);
    show("/", {});
    EXPECT_EQ(operands.browser, browser);
    EXPECT_EQ(operands.connection, "local");
    EXPECT_EQ(operands.path, "/srv");
    EXPECT_THAT(operands.names, ElementsAre("a", "b"));
    EXPECT_EQ(operands.pathOf("a"), "/srv/a");
    EXPECT_THAT(pane->operands().names, IsEmpty());
    EXPECT_EQ(pane->operands().pathOf("a"), "/a");
}

TEST_F(PaneControllerTest, aDetachedDisplayIsLeftAlone)
{
    pane->detach(display);
    show("/srv", {file("a")});
    EXPECT_EQ(display.path, PaneSpec::localHome().path);
}

TEST_F(PaneControllerTest, aDisplayThatIsNotAttachedAnyMoreDetachesNothing)
{
    RecordingDisplay newer;
    pane->attach(newer);
    pane->detach(display);
    show("/srv", {file("a")});
    EXPECT_EQ(newer.path, "/srv");
    pane->detach(newer);
}

TEST_F(PaneControllerTest, aPaneWithoutAViewKeepsWorking)
{
    pane->detach(display);
    show("/srv", {directory("a"), file("b"), file("c")});
    press(Key::end);
    press(Key::insert);
    pane->toggleSort(SortKey::name);
    loop.start(browser->refresh("/srv"));
    loop.drain();
    answer("/srv", {directory("a"), file("b"), file("c"), file("d")});
    EXPECT_THAT(visible(), ElementsAre("a", "d", "c", "b"));
    EXPECT_THAT(marked(), ElementsAre("c"));
    EXPECT_EQ(pane->cursorName(), "c");

    RecordingDisplay fresh;
    pane->attach(fresh);
    EXPECT_EQ(fresh.path, "/srv");
    EXPECT_EQ(fresh.cursorRow, 3);
    EXPECT_EQ(fresh.reloads, 1);
    EXPECT_FALSE(fresh.ascending);
    EXPECT_THAT(fresh.status, AllOf(StartsWith("3 files, 1 dirs"), HasSubstr("1 marked")));
    pane->detach(fresh);
}

TEST_F(PaneControllerTest, theOwnerHearsOfArrivals)
{
    int arrivals = 0;
    pane->callbacks.onLocationChanged = [&] { ++arrivals; };
    show("/srv", {});
    EXPECT_EQ(arrivals, 1);
}

TEST_F(PaneSwitchTest, theTimingOfAHostIsThatOfTheNetwork)
{
    otherProvider->answersAtOnce = [&](auto const &) { return there({file("a")}); };
    switchThere();
    EXPECT_EQ(display.status, "1 files, 0 dirs   ·  0 ms network");
}

TEST_F(PaneSwitchTest, whatIsReadAgainAtOnceBehindAStaleFolderIsShown)
{
    otherProvider->answersAtOnce = [&](auto const &) { return there({file("old")}); };
    loop.start(other->open("/srv"));
    loop.drain();
    clock->advance(std::chrono::seconds(31));
    otherProvider->answersAtOnce = [&](auto const &) { return there({file("new")}); };
    switchThere();
    EXPECT_EQ(pane->connectionName(), "other");
    EXPECT_THAT(visible(), ElementsAre("new"));
}

TEST_F(PaneSwitchTest, aFailedSwitchKeepsListeningToTheConnectionThatItHas)
{
    show("/srv", {file("a")});
    switchThere();
    otherProvider->takeOldest().answer->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();
    loop.start(browser->refresh("/srv"));
    loop.drain();
    answer("/srv", {file("b")});
    EXPECT_THAT(visible(), ElementsAre("b"));
}

TEST_F(PaneSwitchTest, aHostThatFailsBehindAnotherThatWasGivenUpStopsTheSpinnerAndSaysSo)
{
    show("/srv", {file("a")});
    rememberThere();
    connections.browsers["first"] = other;
    pane->open({"first", "/srv", true}, connections);
    pane->open({"second", "/srv", true}, connections);
    loop.drain();
    refuse("second", "no route");
    EXPECT_FALSE(display.isSpinning);
    EXPECT_THAT(display.noticeText(), HasSubstr("no route"));
    EXPECT_EQ(display.path, "/srv");
    EXPECT_THAT(visible(), ElementsAre("a"));
    refuse("first", "late");
    EXPECT_THAT(display.noticeText(), Not(HasSubstr("late")));
}

TEST_F(PaneSwitchTest, aPaneThatHasShownNothingYetGoesHomeWhenItsHostFails)
{
    openHost("first");
    refuse("first", "no way");
    answer(PaneSpec::localHome().path, {file("a")});
    EXPECT_THAT(display.noticeText(), HasSubstr("no way"));
    EXPECT_EQ(display.path, PaneSpec::localHome().path);
}

/// Moments at which a view may come. The test's own display has been there all the time.
class FreshDisplayTest : public PaneSwitchTest {
protected:
    /// A display that comes now shows what the one shows that has been there.
    void expectTheSameOnAFreshDisplay(std::string const &moment)
    {
        SCOPED_TRACE(moment);
        RecordingDisplay fresh;
        pane->attach(fresh);
        EXPECT_EQ(fresh.reloads, 1);
        EXPECT_EQ(fresh.cursorRow, display.cursorRow);
        EXPECT_EQ(fresh.firstRow, display.firstRow);
        EXPECT_EQ(fresh.connection, display.connection);
        EXPECT_EQ(fresh.path, display.path);
        EXPECT_EQ(fresh.status, display.status);
        EXPECT_EQ(fresh.notice, display.notice);
        EXPECT_EQ(fresh.isSpinning, display.isSpinning);
        EXPECT_EQ(fresh.sortKey, display.sortKey);
        EXPECT_EQ(fresh.ascending, display.ascending);
        EXPECT_EQ(fresh.isActive, display.isActive);
        pane->attach(display);
    }
};

TEST_F(FreshDisplayTest, showsEverythingAtOnceAtEveryMomentOfANavigation)
{
    expectTheSameOnAFreshDisplay("before anything");
    navigate("/srv");
    expectTheSameOnAFreshDisplay("on the way");
    clock->advance(milliseconds(120));
    loop.drain();
    ASSERT_TRUE(display.isSpinning);
    expectTheSameOnAFreshDisplay("late");
    answer("/srv", {file("a"), file("b"), file("c")});
    expectTheSameOnAFreshDisplay("arrived");
    press(Key::end);
    press(Key::insert);
    display.firstRow = 2;
    expectTheSameOnAFreshDisplay("scrolled, with a mark");
    navigate("/locked");
    expectTheSameOnAFreshDisplay("on the way to another folder");
    answerError("/locked", "Permission denied");
    ASSERT_THAT(display.noticeText(), HasSubstr("Permission denied"));
    expectTheSameOnAFreshDisplay("failed");
}

TEST_F(FreshDisplayTest, showsEverythingAtOnceAfterEveryChangeOfTheView)
{
    show("/srv", {file("a"), file("b"), file(".c")});
    pane->toggleSort(SortKey::date);
    expectTheSameOnAFreshDisplay("another order");
    pane->toggleHidden();
    expectTheSameOnAFreshDisplay("with hidden files");
    pane->setActive(true);
    expectTheSameOnAFreshDisplay("active");
    pane->setActive(false);
    expectTheSameOnAFreshDisplay("not active");
    pane->showStatus("some words");
    expectTheSameOnAFreshDisplay("with words on the status line");
}

TEST_F(FreshDisplayTest, showsEverythingAtOnceAtEveryMomentOnTheWayToAHost)
{
    show("/usr", {file("a")});
    openHost("first");
    ASSERT_EQ(display.path, "connecting…");
    expectTheSameOnAFreshDisplay("connecting");
    refuse("first", "no way");
    expectTheSameOnAFreshDisplay("refused");
    rememberThere();
    openHost("second");
    ASSERT_EQ(display.status, "connecting to second…");
    expectTheSameOnAFreshDisplay("on a remembered folder");
    connections.waiting.back().answer->succeed(other);
    loop.drain();
    ASSERT_FALSE(display.isSpinning);
    expectTheSameOnAFreshDisplay("connected");
}

TEST_F(FreshDisplayTest, isScrolledAsTheOneBeforeItThatWentLongAgo)
{
    show("/srv", {file("a"), file("b"), file("c")});
    display.firstRow = 2;
    pane->detach(display);
    loop.drain();
    RecordingDisplay fresh;
    pane->attach(fresh);
    EXPECT_EQ(fresh.firstRow, 2);
    pane->detach(fresh);
}

/// How many turns of the loop lie between the new connection's answer and the old one's.
class PaneSwitchRaceTest : public PaneSwitchTest, public ::testing::WithParamInterface<int> {};

TEST_P(PaneSwitchRaceTest, aListingOfTheConnectionBeforeIsNeverShownUnderTheNewOne)
{
    show("/srv", {file("a")});
    loop.start(browser->refresh("/srv"));
    switchThere();
    answerAfter(20, otherProvider->takeOldest(), there({file("theirs")}));
    answerAfter(GetParam(), take("/srv"), there({file("ours")}));
    loop.drain();
    EXPECT_EQ(pane->connectionName(), "other");
    EXPECT_THAT(visible(), ElementsAre("theirs"));
}

INSTANTIATE_TEST_SUITE_P(Turns, PaneSwitchRaceTest, ::testing::Range(0, 40));

} // namespace
} // namespace tw::test
