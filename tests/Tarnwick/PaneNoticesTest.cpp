#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "Tarnwick/Panes/PaneController.h"
#include "Tarnwick/Panes/PaneNotice.h"
#include "tests/support/FakeConnections.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Listings.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingDisplay.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::Contains;
using ::testing::HasSubstr;
using Action = PaneNotice::Action;
using NoticeKind = PaneNotice::Kind;
using Phase = HostStatus::Phase;

/// A pane of this machine's files, and a host "box" that comes up when the test says so.
class PaneNoticesTest : public ::testing::Test {
protected:
    PaneNoticesTest()
    {
        here->usefulDepth = host->usefulDepth = 1;
        connections.browsers["box"] = there;
        pane->attach(display);
        loop.drain();
    }

    ~PaneNoticesTest() override
    {
        pane->detach(display);
        pane.reset();
        loop.drain();
        for (auto const &browser : {local, there})
            loop.start(browser->shutdown());
        loop.drain();
        pass(seconds(2)); // the timers that were stopped
    }

    std::shared_ptr<Browser> browserOf(std::shared_ptr<FileSystemProvider> provider)
    {
        return std::make_shared<Browser>(
            std::move(provider),
            Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
            Browser::Config{});
    }

    void answer(ScriptedProvider &provider, std::string const &path)
    {
        auto const request = provider.takeOldest();
        ASSERT_EQ(request.path, path);
        request.answer->succeed({{path, listing(path, {file("a"), file("b")}, clock->now())}});
        loop.drain();
    }

    void refuse(ScriptedProvider &provider, std::string const &why)
    {
        provider.takeOldest().answer->fail(std::make_exception_ptr(std::runtime_error(why)));
        loop.drain();
    }

    void navigate(std::string const &path)
    {
        pane->navigate(path);
        loop.drain();
    }

    void showHere(std::string const &path)
    {
        navigate(path);
        answer(*here, path);
    }

    void openHost()
    {
        pane->open({"box", "/srv", true}, connections);
        loop.drain();
    }

    void showHost()
    {
        openHost();
        connect();
        answer(*host, "/srv");
    }

    FakeConnections::Request &connecting() { return connections.waiting.back(); }

    void connect()
    {
        connecting().answer->succeed(there);
        loop.drain();
    }

    void refuseHost(std::string const &why)
    {
        connecting().answer->fail(std::make_exception_ptr(RemoteShellError::ConnectFailed("box", why)));
        loop.drain();
    }

    void become(Phase phase, milliseconds ago = {})
    {
        host->become({phase, clock->steadyNow() - ago});
        loop.drain();
    }

    void choose(Action action)
    {
        pane->noticeActionChosen(action);
        loop.drain();
    }

    bool press(Key key)
    {
        auto const isUsed = pane->handleKey({.key = key, .text = {}});
        loop.drain();
        return isUsed;
    }

    void pass(milliseconds time)
    {
        clock->advance(time);
        loop.drain();
    }

    bool isWaitingShown() const { return display.notice && display.notice->kind == NoticeKind::waiting; }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<ScriptedProvider> here = std::make_shared<ScriptedProvider>();
    std::shared_ptr<FakeHost> host = std::make_shared<FakeHost>();
    std::shared_ptr<Browser> local = browserOf(here);
    std::shared_ptr<Browser> there = browserOf(host);
    FakeConnections connections{local};
    MemoryDefaults defaults;
    RecordingDisplay display;
    std::shared_ptr<PaneController> pane =
        PaneController::create({.mainContext = loop.context(), .clock = clock, .defaults = defaults}, local, "local");
};

TEST_F(PaneNoticesTest, aFailureGoesWithEscapeAndTheMarksWithTheNext)
{
    showHere("/usr");
    press(Key::end);
    press(Key::insert);
    navigate("/locked");
    refuse(*here, "no permission");
    EXPECT_THAT(display.noticeText(), HasSubstr("no permission"));
    EXPECT_TRUE(press(Key::escape));
    EXPECT_FALSE(display.notice);
    EXPECT_EQ(pane->model().markedNames().size(), 1U);
    press(Key::escape);
    EXPECT_TRUE(pane->model().markedNames().empty());
}

TEST_F(PaneNoticesTest, aHostThatIsUpIsNotSaidToBeOutOfReachWhileItsFolderIsRead)
{
    showHere("/usr");
    openHost();
    refuseHost("no route to host");
    choose(Action::logIn);
    connect();
    EXPECT_FALSE(display.notice);
    answer(*host, "/srv");
    EXPECT_FALSE(display.notice);
}

TEST_F(PaneNoticesTest, retryGoesToTheFolderThatFailed)
{
    showHere("/usr");
    navigate("/slow");
    refuse(*here, "not now");
    EXPECT_THAT(display.notice->actions, Contains(Action::retry));
    choose(Action::retry);
    EXPECT_EQ(display.path, "/slow");
    answer(*here, "/slow");
    EXPECT_EQ(pane->pathOnShow(), "/slow");
    EXPECT_FALSE(display.notice);
}

TEST_F(PaneNoticesTest, retryOfAFolderOfAHostBehindALocalOneGoesToTheHost)
{
    showHere("/usr");
    openHost();
    connect();
    refuse(*host, "not now");
    EXPECT_EQ(display.connection, "local");
    choose(Action::retry);
    EXPECT_EQ(display.connection, "box");
    answer(*host, "/srv");
    EXPECT_EQ(pane->connectionName(), "box");
}

TEST_F(PaneNoticesTest, retryOfAHostConnectsAgain)
{
    showHere("/usr");
    openHost();
    refuseHost("no route to host");
    choose(Action::retry);
    ASSERT_EQ(connections.waiting.size(), 2U);
    EXPECT_FALSE(connecting().mayAsk);
    connect();
    answer(*host, "/srv");
    EXPECT_EQ(pane->connectionName(), "box");
    EXPECT_FALSE(display.notice);
}

TEST_F(PaneNoticesTest, aLoginLeadsWhereTheUserWantedToGo)
{
    showHere("/usr");
    openHost();
    refuseHost("Permission denied (publickey,password).");
    choose(Action::logIn);
    ASSERT_EQ(connections.waiting.size(), 2U);
    EXPECT_TRUE(connecting().mayAsk);
    EXPECT_EQ(display.path, "connecting…");
    connect();
    answer(*host, "/srv");
    EXPECT_EQ(pane->connectionName(), "box");
    EXPECT_EQ(pane->pathOnShow(), "/srv");
    EXPECT_FALSE(display.notice);
}

TEST_F(PaneNoticesTest, aLoginAfterALostConnectionLeadsToTheFolderThatFailed)
{
    showHost();
    navigate("/var");
    host->takeOldest().answer->fail(std::make_exception_ptr(RemoteShellError::ConnectFailed("box", "denied")));
    loop.drain();
    choose(Action::logIn);
    EXPECT_TRUE(connecting().mayAsk);
    connect();
    answer(*host, "/var");
    EXPECT_EQ(pane->pathOnShow(), "/var");
}

TEST_F(PaneNoticesTest, theReasonStaysOnShowWhenThePaneGoesHomeInstead)
{
    openHost();
    refuseHost("no route to host");
    answer(*here, PaneSpec::localHome().path);
    EXPECT_EQ(display.path, PaneSpec::localHome().path);
    EXPECT_THAT(display.noticeText(), HasSubstr("box"));
    choose(Action::retry);
    EXPECT_EQ(connecting().host, "box");
    EXPECT_EQ(connections.waiting.size(), 2U);
}

TEST_F(PaneNoticesTest, cancellationIsNoFailure)
{
    showHere("/usr");
    openHost();
    connecting().answer->fail(std::make_exception_ptr(Cancelled()));
    loop.drain();
    EXPECT_FALSE(display.notice);
    EXPECT_EQ(display.path, "/usr");
    EXPECT_EQ(display.connection, "local");
}

TEST_F(PaneNoticesTest, theFirstActionGetsTheKeyboardIfNothingWasPressedMeanwhile)
{
    showHere("/usr");
    openHost();
    refuseHost("no route to host");
    EXPECT_EQ(display.noticeOffers, 1);
    choose(Action::retry);
    refuseHost("no route to host");
    EXPECT_EQ(display.noticeOffers, 2);
}

TEST_F(PaneNoticesTest, theKeyboardStaysWithAPersonWhoWentOnMeanwhile)
{
    showHere("/usr");
    openHost();
    press(Key::down);
    refuseHost("no route to host");
    EXPECT_TRUE(display.notice);
    EXPECT_EQ(display.noticeOffers, 0);
    openHost();
    pane->rowClicked(1);
    refuseHost("no route to host");
    EXPECT_EQ(display.noticeOffers, 0);
}

TEST_F(PaneNoticesTest, leftAndRightLeadIntoTheStripIfThereIsOne)
{
    showHere("/usr");
    EXPECT_FALSE(press(Key::right));
    EXPECT_EQ(display.noticeOffers, 0);
    navigate("/locked");
    press(Key::down);
    refuse(*here, "no permission");
    EXPECT_EQ(display.noticeOffers, 0);
    EXPECT_TRUE(press(Key::right));
    EXPECT_TRUE(press(Key::left));
    EXPECT_EQ(display.noticeOffers, 2);
}

TEST_F(PaneNoticesTest, aHostThatIsLongInComingIsSaidToBeWaitedFor)
{
    showHere("/usr");
    become(Phase::reaching);
    openHost();
    EXPECT_FALSE(display.notice);
    pass(seconds(1));
    ASSERT_TRUE(isWaitingShown());
    EXPECT_THAT(display.noticeText(), HasSubstr("1 s"));
    EXPECT_THAT(display.notice->actions, Contains(Action::giveUp));
    pass(seconds(1));
    EXPECT_THAT(display.noticeText(), HasSubstr("2 s"));
    become(Phase::up);
    connect();
    answer(*host, "/srv");
    EXPECT_FALSE(display.notice);
}

TEST_F(PaneNoticesTest, aFolderThatIsLongInComingFromAHostThatIsUpHasNoWords)
{
    showHost();
    become(Phase::up);
    navigate("/var");
    pass(milliseconds(120));
    pass(seconds(5));
    EXPECT_TRUE(display.isSpinning);
    EXPECT_FALSE(display.notice);
}

TEST_F(PaneNoticesTest, aHostThatFallsSilentIsSaidToBeSilentWhileThePaneWaits)
{
    showHost();
    navigate("/var");
    pass(milliseconds(120));
    become(Phase::silent, milliseconds(5000));
    ASSERT_TRUE(isWaitingShown());
    EXPECT_THAT(display.noticeText(), HasSubstr("5 s"));
    answer(*host, "/var");
    EXPECT_FALSE(display.notice);
    EXPECT_EQ(host->statusReaders, 0) << "nobody waits for it any more";
}

TEST_F(PaneNoticesTest, aHostThatFallsSilentDuringAChangeIsSaidToBeSilent)
{
    showHost();
    auto work = pane->beginChange(there);
    pass(milliseconds(120));
    pass(seconds(1));
    ASSERT_EQ(host->runs.size(), 1U) << "a change may be long and silent, a question has an answer";
    become(Phase::silent, milliseconds(5000));
    EXPECT_THAT(display.noticeText(), HasSubstr("5 s"));
    press(Key::escape);
    EXPECT_FALSE(display.notice) << "the change goes on without the words";
    work.reset();
    host->runs.front().answer->succeed({});
    pass(seconds(1));
    EXPECT_EQ(host->runs.size(), 1U);
}

TEST_F(PaneNoticesTest, escapeGivesUpAHostAndEndsItsAttempt)
{
    showHere("/usr");
    become(Phase::reaching);
    openHost();
    pass(seconds(1));
    EXPECT_FALSE(connecting().hasCallerGone());
    EXPECT_TRUE(press(Key::escape));
    EXPECT_TRUE(connecting().hasCallerGone());
    EXPECT_FALSE(display.notice);
    EXPECT_FALSE(display.isSpinning);
    EXPECT_EQ(display.path, "/usr");
    EXPECT_EQ(display.connection, "local");
    EXPECT_THAT(display.status, HasSubstr("2 files"));
}

TEST_F(PaneNoticesTest, escapeGivesUpAFolderOfAHostAndTheOldRowsStay)
{
    showHost();
    navigate("/var");
    pass(milliseconds(120));
    become(Phase::silent, milliseconds(5000));
    press(Key::escape);
    EXPECT_FALSE(display.notice);
    EXPECT_FALSE(display.isSpinning);
    EXPECT_EQ(display.path, "/srv");
    EXPECT_EQ(pane->model().visibleNames().size(), 2U);
    answer(*host, "/var");
    EXPECT_EQ(pane->pathOnShow(), "/srv") << "the answer that comes late is of no interest";
}

TEST_F(PaneNoticesTest, theButtonGivesUpAsEscapeDoes)
{
    showHere("/usr");
    become(Phase::reaching);
    openHost();
    pass(seconds(1));
    choose(Action::giveUp);
    EXPECT_TRUE(connecting().hasCallerGone());
    EXPECT_EQ(display.path, "/usr");
}

TEST_F(PaneNoticesTest, aPaneThatHasShownNothingGoesHomeWhenItsHostIsGivenUp)
{
    openHost();
    press(Key::escape);
    EXPECT_TRUE(connecting().hasCallerGone());
    answer(*here, PaneSpec::localHome().path);
    EXPECT_EQ(pane->pathOnShow(), PaneSpec::localHome().path);
    EXPECT_FALSE(display.notice);
}

TEST_F(PaneNoticesTest, aPaneThatHasShownNothingEndsInTheRootAtTheLatest)
{
    navigate("/slow");
    press(Key::escape);
    EXPECT_EQ(display.path, PaneSpec::localHome().path);
    press(Key::escape);
    EXPECT_EQ(display.path, "/");
    press(Key::escape);
    EXPECT_FALSE(display.isSpinning);
    EXPECT_FALSE(press(Key::escape) && display.notice);
}

TEST_F(PaneNoticesTest, whatIsWaitedForComesBeforeTheFailureAndTheFailureComesBack)
{
    showHere("/usr");
    become(Phase::reaching);
    openHost();
    refuseHost("no route to host");
    choose(Action::retry);
    EXPECT_EQ(display.notice->kind, NoticeKind::failure) << "the rows do not jump for a moment";
    pass(seconds(1));
    EXPECT_TRUE(isWaitingShown());
    refuseHost("host is down");
    EXPECT_EQ(display.notice->kind, NoticeKind::failure);
    EXPECT_THAT(display.notice->details, HasSubstr("host is down"));
}

TEST_F(PaneNoticesTest, theWordsOfTheHostAreForTheOwnerOfThePaneToShow)
{
    std::string shown;
    pane->callbacks.onDetailsWanted = [&](Text const &, std::string words) { shown = std::move(words); };
    showHere("/usr");
    openHost();
    refuseHost("kex_exchange_identification: banner line contains invalid characters");
    choose(Action::details);
    EXPECT_THAT(shown, HasSubstr("banner line contains invalid characters"));
}

TEST_F(PaneNoticesTest, theKeysOfAHostAreShownWithoutTheOtherWords)
{
    std::string shown;
    pane->callbacks.onDetailsWanted = [&](Text const &, std::string words) { shown = std::move(words); };
    showHere("/usr");
    openHost();
    refuseHost("no route to host");
    choose(Action::showKey);
    EXPECT_EQ(shown, display.notice->keys);
}

} // namespace
} // namespace tw::test
