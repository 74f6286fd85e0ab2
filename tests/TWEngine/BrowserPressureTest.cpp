#include "tests/support/BrowserTest.h"

#include <algorithm>

namespace tw::test {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What a Browser does when keys are held down and folders do not answer.
class BrowserPressureTest : public BrowserTest {
protected:
    Started<OpenResult> reread(std::string path)
    {
        auto started = loop.start(browser->reread(std::move(path)));
        loop.drain();
        return started;
    }

    /// Moves the cursor over that many folders, faster than any of them is scanned.
    void moveCursorOver(int folders)
    {
        for (int row = 1; row <= folders; ++row)
            get(browser->prefetch("/row" + std::to_string(row)));
    }

    /// Answers the fetch that waits for that path at that priority.
    void answerOne(std::string const &path, FetchPriority priority, std::vector<ListedEntry> const &rows)
    {
        auto const request = std::ranges::find_if(provider->waiting, [&](ScriptedProvider::Request const &each) {
            return each.path == path && each.priority == priority;
        });
        ASSERT_NE(request, provider->waiting.end()) << path << " is not asked for";
        auto const completion = request->answer;
        provider->waiting.erase(request);
        completion->succeed(one(path, rows));
        loop.drain();
    }
};

TEST_F(BrowserPressureTest, anOpenedFolderDoesNotWaitForTheScanOfTheCursor)
{
    provider->usefulDepth = 1; // as on this machine: both ask for one level
    get(browser->prefetch("/srv"));
    auto const opened = open("/srv");
    ASSERT_THAT(asked(), ElementsAre("/srv 1 background", "/srv 1 interactive"));
    answerOne("/srv", FetchPriority::interactive, {file("a")});
    EXPECT_THAT(namesIn(opened), ElementsAre("a"));
    answer({file("from before")});
    EXPECT_THAT(names(*get(browser->cached("/srv"))), ElementsAre("a"));
}

TEST_F(BrowserPressureTest, anOpenedFolderIsThereAsSoonAsAnyScanBringsIt)
{
    get(browser->prefetch("/srv"));
    auto const opened = open("/srv");
    answerOne("/srv", FetchPriority::background, {file("a")});
    EXPECT_THAT(namesIn(opened), ElementsAre("a"));
    answerOne("/srv", FetchPriority::interactive, {file("a"), file("b")});
    EXPECT_THAT(names(*get(browser->cached("/srv"))), ElementsAre("a", "b"));
}

TEST_F(BrowserPressureTest, aRereadDoesNotTakeWhatAScanFromBeforeBrings)
{
    openCold("/srv", {file("a")});
    get(browser->refresh("/srv"));
    auto const again = reread("/srv");
    answerOne("/srv", FetchPriority::background, {file("old")});
    EXPECT_FALSE(again.isDone());
    answerOne("/srv", FetchPriority::interactive, {file("new")});
    EXPECT_THAT(namesIn(again), ElementsAre("new"));
}

TEST_F(BrowserPressureTest, aRereadThatBeginsJustAsAnotherEndsDoesNotTakeItsAnswerAway)
{
    provider->usefulDepth = 1;
    openCold("/srv", {file("a")});
    auto const first = reread("/srv");
    auto const request = provider->takeOldest();
    // The second runs between the answer and the first caller's turn.
    auto const second = loop.start(browser->reread("/srv"));
    request.answer->succeed(one("/srv", {file("b")}));
    loop.drain();
    while (!provider->waiting.empty())
        answer({file("c")});
    EXPECT_NO_THROW(first.value());
    EXPECT_THAT(namesIn(second), ElementsAre("c"));
}

TEST_F(BrowserPressureTest, aHeldArrowKeyLeavesTheRunningScanAndTheNewest)
{
    moveCursorOver(300);
    EXPECT_THAT(asked(), ElementsAre("/row1 3 background"));
    answer({});
    EXPECT_THAT(asked(), ElementsAre("/row300 3 background"));
    answer({});
    EXPECT_THAT(asked(), IsEmpty());
    EXPECT_EQ(get(browser->stats()).prefetches, 2);
}

TEST_F(BrowserPressureTest, aFolderThatIsEnteredGoesBeforeTheScansOfTheCursor)
{
    moveCursorOver(300);
    auto const opened = open("/row300");
    ASSERT_THAT(asked(), ElementsAre("/row1 3 background", "/row300 1 interactive"));
    answerOne("/row300", FetchPriority::interactive, {file("a")});
    EXPECT_THAT(namesIn(opened), ElementsAre("a"));
}

TEST_F(BrowserPressureTest, aFolderThatDoesNotAnswerDoesNotEndAllScansOfTheCursor)
{
    get(browser->prefetch("/dead"));
    clock->advance(seconds(4));
    get(browser->prefetch("/alive"));
    ASSERT_THAT(asked(), ElementsAre("/dead 3 background", "/alive 3 background"));
    auto const late = provider->takeOldest();
    answer({file("a")});
    EXPECT_TRUE(get(browser->cached("/alive")));
    late.answer->succeed({});
    loop.drain();
}

TEST_F(BrowserPressureTest, aRereadFetchesAFolderThatIsFreshInMemory)
{
    openCold("/srv", {file("a")});
    auto const again = reread("/srv/");
    ASSERT_THAT(asked(), ElementsAre("/srv 1 interactive"));
    answer({file("b")});
    EXPECT_THAT(namesIn(again), ElementsAre("b"));
    EXPECT_FALSE(again.value().isStale);
    EXPECT_TRUE(again.value().wasCold);
}

TEST_F(BrowserPressureTest, ofManyRereadsOfAFolderOneRunsAndTheOthersShareTheNext)
{
    provider->usefulDepth = 1;
    openCold("/srv", {file("a")});
    auto const fetchesBefore = provider->fetches;
    std::vector<Started<OpenResult>> rereads;
    for (int repeat = 0; repeat < 300; ++repeat)
        rereads.push_back(reread("/srv"));
    EXPECT_THAT(asked(), ElementsAre("/srv 1 interactive"));
    answer({file("b")});
    EXPECT_THAT(namesIn(rereads.front()), ElementsAre("b"));
    EXPECT_FALSE(rereads[1].isDone()) << "the answer is to a question from before its call";
    EXPECT_THAT(asked(), ElementsAre("/srv 1 interactive"));
    answer({file("c")});
    for (std::size_t repeat = 1; repeat < rereads.size(); ++repeat)
        EXPECT_THAT(namesIn(rereads[repeat]), ElementsAre("c"));
    EXPECT_EQ(provider->fetches, fetchesBefore + 2);
}

TEST_F(BrowserPressureTest, repeatedRereadsHaveTwoListingsUnderWayAtMost)
{
    openCold("/srv", {file("a")});
    std::vector<Started<OpenResult>> rereads;
    for (int repeat = 0; repeat < 50; ++repeat) {
        rereads.push_back(reread("/srv"));
        rereads.push_back(reread("/srv"));
        EXPECT_LE(provider->waiting.size(), 2U);
        answerOne("/srv", FetchPriority::interactive, {file(std::to_string(repeat))});
    }
    while (!provider->waiting.empty())
        answer({file("last")});
    for (auto const &each : rereads)
        EXPECT_TRUE(each.isDone());
}

TEST_F(BrowserPressureTest, aRereadWaitsForTheOpenedFolderAndThenAsksAgain)
{
    provider->usefulDepth = 1;
    auto const opened = open("/srv");
    auto const again = reread("/srv");
    EXPECT_THAT(asked(), ElementsAre("/srv 1 interactive"));
    answer({file("a")});
    EXPECT_THAT(namesIn(opened), ElementsAre("a"));
    EXPECT_FALSE(again.isDone());
    answer({file("b")});
    EXPECT_THAT(namesIn(again), ElementsAre("b"));
}

TEST_F(BrowserPressureTest, aRereadThatFailsDoesNotFailTheOneBehindIt)
{
    provider->usefulDepth = 1;
    auto const first = reread("/srv");
    auto const second = reread("/srv");
    answerError("link lost");
    EXPECT_THROW(first.value(), std::runtime_error);
    answer({file("a")});
    EXPECT_THAT(namesIn(second), ElementsAre("a"));
}

TEST_F(BrowserPressureTest, aRereadWhoseAnswerIsForgottenMeanwhileAsksAgain)
{
    provider->usefulDepth = 1;
    auto const again = reread("/srv");
    get(browser->invalidate("/srv"));
    answer({file("old")});
    EXPECT_FALSE(again.isDone());
    answer({file("new")});
    EXPECT_THAT(namesIn(again), ElementsAre("new"));
}

TEST_F(BrowserPressureTest, aRereadOfAFolderThatIsGoneSaysSo)
{
    openCold("/srv", {file("a")});
    auto const again = reread("/srv");
    answerWith(Listings{});
    EXPECT_THROW(again.value(), BrowserError::NotADirectory);
    EXPECT_FALSE(get(browser->cached("/srv")));
}

TEST_F(BrowserPressureTest, aCallerThatIsStoppedLeavesTheRereadToTheOthers)
{
    provider->usefulDepth = 1;
    reread("/srv");
    auto const impatient = reread("/srv");
    auto const patient = reread("/srv");
    impatient.stop();
    loop.drain();
    EXPECT_THROW(impatient.value(), Cancelled);
    answer({file("a")});
    answer({file("b")});
    EXPECT_THAT(namesIn(patient), ElementsAre("b"));
}

TEST_F(BrowserPressureTest, aShutdownEndsTheRereadsThatWaitAndFetchesNothingMore)
{
    auto const first = reread("/srv");
    auto const second = reread("/srv");
    moveCursorOver(3);
    auto const fetchesBefore = provider->fetches;
    get(browser->shutdown());
    EXPECT_THROW(first.value(), Cancelled);
    EXPECT_THROW(second.value(), Cancelled);
    EXPECT_EQ(provider->fetches, fetchesBefore);
}

TEST_F(BrowserPressureTest, twoBrowsersShareOneBudget)
{
    provider->usefulDepth = 1;
    memory = std::make_shared<ListingBudget>(Strand(loop.context()), 25);
    makeBrowser({});
    auto const first = browser;
    openCold("/a", {file("0123456789")});
    clock->advance(seconds(1));
    makeBrowser({});
    openCold("/b", {file("0123456789")});
    clock->advance(seconds(1));
    openCold("/c", {file("0123456789")});
    EXPECT_FALSE(get(first->cached("/a")));
    EXPECT_TRUE(get(browser->cached("/b")));
    EXPECT_TRUE(get(browser->cached("/c")));
    get(first->shutdown());
}

} // namespace
} // namespace tw::test
