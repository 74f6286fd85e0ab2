#include "Tarnwick/Panes/FolderWatcher.h"

#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "tests/support/FakeCommandHost.h"
#include "tests/support/FakeFolderEvents.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Event = FolderWatch::Event;

/// A watcher whose readings end when the test says so, if they do not end at once.
class FolderWatcherTest : public ::testing::Test {
protected:
    ~FolderWatcherTest() override
    {
        watcher->stop();
        for (auto const &run : host->runs)
            run.answer->succeed({});
        pass(std::chrono::minutes(20)); // what was called off
    }

    std::shared_ptr<Browser> browserOf(std::shared_ptr<FileSystemProvider> provider)
    {
        return std::make_shared<Browser>(
            std::move(provider),
            Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
            Browser::Config{});
    }

    void watchHere(std::string const &path = "/here") { watch("local", path, here); }

    void watchHost(std::string const &path = "/srv")
    {
        if (!hostBrowser)
            hostBrowser = browserOf(host);
        watch("box", path, hostBrowser);
    }

    void watch(std::string const &connection, std::string const &path, std::shared_ptr<Browser> const &source)
    {
        watcher->watch(connection, path, source);
        loop.drain();
    }

    void send(Event event)
    {
        local->send(event);
        loop.drain();
    }

    void pass(std::chrono::nanoseconds time)
    {
        loop.drain();
        clock->advance(time);
        loop.drain();
    }

    void checkNow()
    {
        watcher->checkNow();
        loop.drain();
    }

    std::size_t probes() const { return host->runs.size(); }

    /// Answers the last probe, which has taken so long.
    void answer(std::string const &output, milliseconds cost = {})
    {
        clock->advance(cost);
        host->runs.back().answer->succeed({.output = output});
        loop.drain();
    }

    void fail(std::exception_ptr failure)
    {
        host->runs.back().answer->fail(std::move(failure));
        loop.drain();
    }

    /// A reading that takes as long as the test says.
    static Task<void> reading(FolderWatcherTest *self)
    {
        ++self->reads;
        if (self->readingTakes > milliseconds::zero())
            co_await self->clock->sleep(self->readingTakes);
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    std::shared_ptr<FakeFolderEvents> local = std::make_shared<FakeFolderEvents>();
    std::shared_ptr<Browser> here = browserOf(local);
    std::shared_ptr<FakeCommandHost> host = std::make_shared<FakeCommandHost>();
    std::shared_ptr<Browser> hostBrowser;
    Visibility visibility = Visibility::lookedAt;
    int reads = 0;
    milliseconds readingTakes{};
    int paceReports = 0;
    std::shared_ptr<FolderWatcher> watcher =
        std::make_shared<FolderWatcher>(FolderWatcher::Ports{.mainContext = loop.context(),
                                                             .clock = clock,
                                                             .visibility = [this] { return visibility; },
                                                             .onChanged = [this] { return reading(this); },
                                                             .onPaceChanged = [this] { ++paceReports; }});
};

TEST_F(FolderWatcherTest, fourEventsWithinTheDebounceAreOneReading)
{
    watchHere();
    for (int event = 0; event < 4; ++event) {
        send(Event::changed);
        pass(milliseconds(70));
    }
    EXPECT_EQ(reads, 0);
    pass(milliseconds(230));
    EXPECT_EQ(reads, 1);
}

TEST_F(FolderWatcherTest, eventsThatNeverEndAreReadAtMostOnceASecond)
{
    watchHere();
    for (int event = 0; event < 100; ++event) {
        send(Event::changed);
        pass(milliseconds(50));
    }
    EXPECT_GE(reads, 4);
    EXPECT_LE(reads, 5);
}

TEST_F(FolderWatcherTest, whatChangesDuringAReadingIsReadAfterwards)
{
    watchHere();
    readingTakes = milliseconds(50);
    send(Event::changed);
    pass(milliseconds(300));
    send(Event::changed);
    pass(milliseconds(50));
    EXPECT_EQ(reads, 1);
    pass(milliseconds(450)); // nine times as long as the reading
    EXPECT_EQ(reads, 2);
}

TEST_F(FolderWatcherTest, aFolderWithoutEventsIsReadEveryFourSecondsWhileItIsLookedAt)
{
    local->hasEvents = false;
    watchHere();
    pass(seconds(4));
    pass(seconds(4));
    EXPECT_EQ(reads, 2);
    visibility = Visibility::visible;
    pass(seconds(4));
    pass(seconds(40));
    EXPECT_EQ(reads, 2);
    visibility = Visibility::lookedAt;
    checkNow();
    EXPECT_EQ(reads, 3);
    pass(seconds(4));
    EXPECT_EQ(reads, 4);
}

TEST_F(FolderWatcherTest, aFolderThatHasGoneIsReportedOnceAndWatchedAgainWhenItIsRead)
{
    watchHere();
    send(Event::gone);
    EXPECT_EQ(local->ended, 1);
    pass(milliseconds(300));
    EXPECT_EQ(reads, 1);
    EXPECT_THAT(local->watched, ElementsAre("/here", "/here")) << "it may have been made anew";
    pass(seconds(3));
    EXPECT_EQ(reads, 1);
}

TEST_F(FolderWatcherTest, whileItIsGoneItIsLookedForAtEachReading)
{
    watchHere();
    local->hasEvents = false;
    send(Event::gone);
    pass(milliseconds(300));
    pass(seconds(4));
    EXPECT_EQ(local->watched.size(), 3U);
    local->hasEvents = true;
    pass(seconds(4));
    send(Event::changed);
    pass(milliseconds(300));
    EXPECT_EQ(local->watched.size(), 4U);
    EXPECT_EQ(reads, 4);
}

TEST_F(FolderWatcherTest, ofAHiddenPaneEventsAreIgnoredUntilItIsShown)
{
    watchHere();
    visibility = Visibility::hidden;
    send(Event::changed);
    pass(seconds(1));
    EXPECT_EQ(reads, 0);
    visibility = Visibility::lookedAt;
    checkNow();
    EXPECT_EQ(reads, 1);
}

TEST_F(FolderWatcherTest, aVisiblePaneFollowsEventsWhileTheUserWorksElsewhere)
{
    visibility = Visibility::visible;
    watchHere();
    send(Event::changed);
    pass(milliseconds(300));
    EXPECT_EQ(reads, 1);
}

TEST_F(FolderWatcherTest, anotherFolderEndsTheWatchAndTheSameOneDoesNot)
{
    watchHere();
    watchHere();
    EXPECT_EQ(local->watched.size(), 1U);
    send(Event::changed);
    watchHere("/there");
    EXPECT_EQ(local->ended, 1);
    pass(milliseconds(300));
    EXPECT_EQ(reads, 0) << "the change was in the other folder";
}

TEST_F(FolderWatcherTest, theFirstProbeOnlyTakesTheBaseline)
{
    watchHost();
    ASSERT_EQ(probes(), 1U);
    EXPECT_EQ(host->runs[0].command.session, CommandSession::background);
    EXPECT_EQ(host->runs[0].command.onLoss, CommandOnLoss::fails);
    EXPECT_EQ(host->runs[0].command.limit, seconds(10));
    EXPECT_THAT(host->runs[0].command.text, HasSubstr("/srv/")) << "a link is looked through";
    answer("1 2\n");
    EXPECT_EQ(reads, 0);
    pass(seconds(3));
    EXPECT_EQ(probes(), 2U);
    answer("1 2");
    EXPECT_EQ(reads, 0);
    pass(seconds(3));
    answer("3 4");
    EXPECT_EQ(reads, 1);
}

TEST_F(FolderWatcherTest, theMoreAProbeCostsTheFewerThereAre)
{
    watchHost();
    answer("1", milliseconds(200));
    EXPECT_EQ(watcher->pace().seconds(), 10.0);
    EXPECT_EQ(paceReports, 1);
    pass(seconds(9));
    EXPECT_EQ(probes(), 1U);
    pass(seconds(1));
    EXPECT_EQ(probes(), 2U);
}

TEST_F(FolderWatcherTest, twoWatchersComeToProbeAtTheSameMoments)
{
    pass(milliseconds(1400)); // whenever the first began
    watchHost();
    answer("1");
    auto const second =
        std::make_shared<FolderWatcher>(FolderWatcher::Ports{.mainContext = loop.context(),
                                                             .clock = clock,
                                                             .visibility = [] { return Visibility::lookedAt; },
                                                             .onChanged = [this] { return reading(this); },
                                                             .onPaceChanged = [] {}});
    pass(milliseconds(900));
    second->watch("box", "/other", hostBrowser);
    loop.drain();
    answer("1");
    auto const before = probes();
    pass(milliseconds(3700));
    EXPECT_EQ(probes(), before + 2);
    for (auto const index : {before, before + 1})
        host->runs[index].answer->succeed({.output = "1"});
    for (auto const expected : {before + 2, before + 4}) {
        pass(milliseconds(2990));
        EXPECT_EQ(probes(), expected);
        pass(milliseconds(10));
        EXPECT_EQ(probes(), expected + 2);
        for (auto const index : {expected, expected + 1})
            host->runs[index].answer->succeed({.output = "1"});
        loop.drain();
    }
    second->stop();
}

TEST_F(FolderWatcherTest, anEmptyAnswerLeavesTheFingerprintAsItWas)
{
    watchHost();
    answer("1");
    pass(seconds(3));
    answer(" \n");
    pass(seconds(3));
    answer("1");
    EXPECT_EQ(reads, 0);
}

TEST_F(FolderWatcherTest, aHostThatIsAwayIsAskedAtTheSamePace)
{
    watchHost();
    answer("1");
    pass(seconds(3));
    fail(std::make_exception_ptr(RemoteShellError::NotConnected()));
    pass(seconds(3));
    ASSERT_EQ(probes(), 3U);
    answer("2");
    EXPECT_EQ(reads, 1);
}

TEST_F(FolderWatcherTest, eachProbeThatGetsStuckDoublesTheWaitForTheNext)
{
    auto const stuck = [] { return std::make_exception_ptr(RemoteShellError::TimedOut(seconds(10))); };
    watchHost();
    for (auto const wait : {seconds(6), seconds(12), seconds(24)}) {
        auto const before = probes();
        fail(stuck());
        pass(wait - seconds(1));
        EXPECT_EQ(probes(), before);
        pass(seconds(1));
        EXPECT_EQ(probes(), before + 1);
    }
    answer("1");
    pass(seconds(3));
    EXPECT_EQ(probes(), 5U);
}

TEST_F(FolderWatcherTest, aHiddenPaneAsksNoHostAndOneThatIsShownAsksAtOnce)
{
    watchHost();
    answer("1");
    visibility = Visibility::hidden;
    pass(seconds(3));
    pass(seconds(60));
    EXPECT_EQ(probes(), 1U);
    visibility = Visibility::lookedAt;
    checkNow();
    EXPECT_EQ(probes(), 2U);
    checkNow();
    EXPECT_EQ(probes(), 2U) << "one at a time";
    answer("2");
    EXPECT_EQ(reads, 1);
}

TEST_F(FolderWatcherTest, theAnswerAboutAFolderThatWasLeftIsDropped)
{
    watchHost();
    auto const old = host->runs[0].answer;
    watchHost("/other");
    old->succeed({.output = "9"});
    answer("1");
    EXPECT_EQ(probes(), 2U);
    pass(seconds(3));
    answer("1");
    EXPECT_EQ(reads, 0);
}

TEST_F(FolderWatcherTest, aWindowsHostIsAskedInItsLanguage)
{
    host->speaks = ShellDialect::powershell;
    watchHost("/C:/Users");
    EXPECT_THAT(host->runs[0].command.text, HasSubstr("-LiteralPath 'C:/Users' "));
    answer("0123456789ABCDEF");
}

TEST_F(FolderWatcherTest, aPlaceThatIsNoHostIsNotAsked)
{
    watch("box:a.zip", "/", here);
    pass(seconds(60));
    EXPECT_TRUE(local->watched.empty());
    EXPECT_EQ(reads, 0);
}

} // namespace
} // namespace tw::test
