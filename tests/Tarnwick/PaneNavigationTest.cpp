// Back and forward, and what the rows keep when they are replaced.

#include "TWEngine/Shell/RemoteShellError.h"
#include "tests/support/PaneControllerTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class PaneNavigationTest : public PaneSwitchTest {
protected:
    PaneNavigationTest()
    {
        defaultAnswer = [this](std::string const &path) {
            return Listings{{path, listing(path, {file("a"), file("b")}, clock->now())}};
        };
    }

    void answerAtOnce()
    {
        provider->answersAtOnce = defaultAnswer;
        otherProvider->answersAtOnce = defaultAnswer;
    }

    void goBack()
    {
        pane->goBack();
        loop.drain();
    }

    void goForward()
    {
        pane->goForward();
        loop.drain();
    }

    /// The host is up and `path` on show.
    void goToHost(std::string const &path)
    {
        connections.browsers["box"] = other;
        pane->open({"box", path, true}, connections);
        loop.drain();
        connect("box");
    }

    /// The folder on show is found to have changed.
    void change(std::vector<ListedEntry> const &rows)
    {
        auto const path = pane->pathOnShow();
        loop.start(browser->refresh(path));
        loop.drain();
        answer(path, rows);
    }

    std::function<Listings(std::string const &)> defaultAnswer;
};

TEST_F(PaneNavigationTest, backAndForwardLeadThroughTheFoldersAndBeepAtTheEnds)
{
    answerAtOnce();
    goBack();
    EXPECT_EQ(display.beeps, 1);
    for (auto const *const path : {"/one", "/two", "/three"})
        navigate(path);
    goBack();
    EXPECT_EQ(pane->pathOnShow(), "/two");
    goBack();
    EXPECT_EQ(pane->pathOnShow(), "/one");
    EXPECT_FALSE(pane->canGoBack());
    EXPECT_EQ(display.beeps, 1);
    goBack();
    EXPECT_EQ(display.beeps, 2);
    EXPECT_EQ(pane->pathOnShow(), "/one");
    goForward();
    goForward();
    EXPECT_EQ(pane->pathOnShow(), "/three");
    EXPECT_FALSE(pane->canGoForward());
    goForward();
    EXPECT_EQ(display.beeps, 3);
}

TEST_F(PaneNavigationTest, backRestoresTheCursor)
{
    answerAtOnce();
    navigate("/one");
    press(Key::end);
    navigate("/two");
    goBack();
    EXPECT_EQ(pane->cursorName(), "b");
}

TEST_F(PaneNavigationTest, aFolderThatCannotBeReachedOnTheWayBackIsLeftOutOfTheCount)
{
    show("/one", {});
    show("/two", {});
    loop.start(browser->invalidateAll());
    goBack();
    answerError("/one", "gone");
    EXPECT_EQ(pane->pathOnShow(), "/two");
    EXPECT_FALSE(pane->canGoForward());
    EXPECT_TRUE(pane->canGoBack());
}

TEST_F(PaneNavigationTest, aWayBackThatIsGivenUpIsNoVisit)
{
    show("/one", {});
    show("/two", {});
    loop.start(browser->invalidateAll());
    goBack();
    press(Key::escape);
    EXPECT_EQ(pane->pathOnShow(), "/two");
    EXPECT_FALSE(pane->canGoForward());
}

TEST_F(PaneNavigationTest, aPlaceIsOfTheConnectionThatItWasVisitedOn)
{
    answerAtOnce();
    navigate("/one");
    press(Key::end);
    goToHost("/one");
    ASSERT_EQ(pane->connectionName(), "box");
    press(Key::end);

    goBack();
    EXPECT_EQ(pane->connectionName(), "local");
    EXPECT_EQ(pane->pathOnShow(), "/one");
    EXPECT_EQ(pane->cursorName(), "b");

    goForward();
    connect("box");
    EXPECT_EQ(pane->connectionName(), "box");
    EXPECT_EQ(pane->pathOnShow(), "/one");
    EXPECT_EQ(pane->cursorName(), "b");
    EXPECT_FALSE(pane->canGoForward());
}

TEST_F(PaneNavigationTest, aHostThatIsGoneOnTheWayBackLeavesTheFolderAndTheVisits)
{
    answerAtOnce();
    goToHost("/srv");
    pane->open({"local", "/one", true}, connections);
    loop.drain();
    loop.start(other->invalidateAll());
    goBack();
    EXPECT_EQ(display.connection, "box");
    refuse("box", "no way");
    EXPECT_THAT(display.noticeText(), HasSubstr("no way"));
    EXPECT_EQ(pane->pathOnShow(), "/one");
    EXPECT_EQ(display.connection, "local");
    EXPECT_TRUE(pane->canGoBack());
    EXPECT_FALSE(pane->canGoForward());
}

TEST_F(PaneNavigationTest, aVisitIsGoneToAtItsNewestPlaceInTheHistory)
{
    answerAtOnce();
    for (auto const *const path : {"/one", "/two", "/three"})
        navigate(path);
    EXPECT_THAT(pane->recentVisits(2),
                ElementsAre(PaneHistory::Visit{"local", "/three"}, PaneHistory::Visit{"local", "/two"}));
    pane->goToVisit({"local", "/two"});
    loop.drain();
    EXPECT_EQ(pane->pathOnShow(), "/two");
    goForward();
    EXPECT_EQ(pane->pathOnShow(), "/three");
}

TEST_F(PaneNavigationTest, aRefreshIsNoVisit)
{
    answerAtOnce();
    navigate("/one");
    navigate("/two");
    goBack();
    pane->refresh();
    loop.drain();
    EXPECT_TRUE(pane->canGoForward());
    EXPECT_FALSE(pane->canGoBack());
}

TEST_F(PaneNavigationTest, aRefreshDuringTheEditingOfANameIsShownWhenTheEditingEnds)
{
    show("/srv", {file("a"), file("b")});
    press(Key::end);
    press(Key::insert);
    pane->holdRefreshes();
    auto const reloads = display.reloads;
    change({file("a"), file("b"), file("early")});
    change({file("a"), file("b"), file("late")});
    EXPECT_EQ(display.reloads, reloads);
    EXPECT_THAT(visible(), ElementsAre("a", "b"));
    pane->applyDeferredRefresh();
    EXPECT_THAT(visible(), ElementsAre("a", "b", "late"));
    EXPECT_EQ(pane->cursorName(), "b");
    EXPECT_THAT(marked(), ElementsAre("b"));
    change({file("a")});
    EXPECT_THAT(visible(), ElementsAre("a")) << "and nothing waits any more";
}

TEST_F(PaneNavigationTest, aFolderThatIsReadAnewWaitsForTheEditingOfANameToo)
{
    show("/srv", {file("a")});
    pane->holdRefreshes();
    pane->refresh();
    loop.drain();
    answer("/srv", {file("b")});
    EXPECT_THAT(visible(), ElementsAre("a"));
    pane->applyDeferredRefresh();
    EXPECT_THAT(visible(), ElementsAre("b"));
}

TEST_F(PaneNavigationTest, whatWaitedForTheFolderBeforeIsDropped)
{
    show("/srv", {file("a")});
    pane->holdRefreshes();
    change({file("b")});
    show("/other", {file("x")});
    pane->applyDeferredRefresh();
    EXPECT_THAT(visible(), ElementsAre("x"));
}

TEST_F(PaneNavigationTest, sortingAndFilteringKeepCursorAndMarks)
{
    show("/srv", {file(".h"), file("a", 3), file("b", 2), file("c", 1)});
    press(Key::end);
    press(Key::insert);
    pane->toggleSort(SortKey::size);
    EXPECT_EQ(pane->cursorName(), "c");
    EXPECT_THAT(marked(), ElementsAre("c"));
    pane->toggleHidden();
    EXPECT_EQ(pane->cursorName(), "c");
    EXPECT_THAT(marked(), ElementsAre("c"));
}

TEST_F(PaneNavigationTest, aConnectionThatBreaksAndComesBackKeepsCursorAndMarks)
{
    show("/srv", {file("a"), file("b"), file("c")});
    press(Key::end);
    press(Key::insert);
    pane->refresh();
    loop.drain();
    take("/srv").answer->fail(std::make_exception_ptr(RemoteShellError::Disconnected("broken pipe")));
    loop.drain();
    EXPECT_EQ(pane->cursorName(), "c");
    EXPECT_THAT(marked(), ElementsAre("c"));
    pane->noticeActionChosen(PaneNotice::Action::retry);
    loop.drain();
    answer("/srv", {file("a"), file("c")});
    EXPECT_EQ(pane->cursorName(), "c");
    EXPECT_THAT(marked(), ElementsAre("c"));
    EXPECT_EQ(display.noticeText(), "");
}

TEST_F(PaneNavigationTest, theCursorGoesToTheNameThatSurvives)
{
    show("/srv", {file("a"), file("b"), file("c")});
    EXPECT_EQ(pane->nameSurviving(std::vector<std::string>{"b"}), "c");
}

} // namespace
} // namespace tw::test
