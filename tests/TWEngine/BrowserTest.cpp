#include "tests/support/BrowserTest.h"

#include "tests/support/ScriptedWriter.h"

namespace tw::test {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(BrowserTest, twoOpensOfOneColdPathShareOneFetch)
{
    auto const first = open("/srv");
    auto const second = open("/srv/");
    EXPECT_THAT(asked(), ElementsAre("/srv 1 interactive"));
    answer({file("a"), file("b")});

    EXPECT_THAT(namesIn(first), ElementsAre("a", "b"));
    EXPECT_THAT(namesIn(second), ElementsAre("a", "b"));
    EXPECT_TRUE(first.value().wasCold);
    EXPECT_FALSE(first.value().isStale);
    EXPECT_EQ(get(browser->stats()).coldFetches, 2);
}

TEST_F(BrowserTest, aFailureReachesAllWhoWaitedAndTheNextOpenTriesAgain)
{
    auto const first = open("/srv");
    auto const second = open("/srv");
    answerError("no such host");
    EXPECT_THROW(first.value(), std::runtime_error);
    EXPECT_THROW(second.value(), std::runtime_error);

    auto const third = open("/srv");
    answer({file("a")});
    EXPECT_THAT(namesIn(third), ElementsAre("a"));
}

TEST_F(BrowserTest, aColdOpenIsOneLevelAndTheScanAheadFollows)
{
    open("/srv");
    EXPECT_THAT(asked(), ElementsAre("/srv 1 interactive"));
    answer({directory("a")});
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background"));
    EXPECT_EQ(get(browser->stats()).prefetches, 1);
}

TEST_F(BrowserTest, aProviderOfOneLevelIsNeverScannedAhead)
{
    provider->usefulDepth = 1;
    open("/srv");
    answer({directory("a")});
    EXPECT_THAT(asked(), IsEmpty());

    clock->advance(seconds(31));
    auto const stale = open("/srv");
    EXPECT_TRUE(stale.value().isStale);
    EXPECT_THAT(asked(), ElementsAre("/srv 1 background"));
}

TEST_F(BrowserTest, aWarmOpenAsksNobody)
{
    openCold("/srv", {file("a")});
    auto const before = provider->fetches;
    auto const warm = open("/srv");
    EXPECT_THAT(namesIn(warm), ElementsAre("a"));
    EXPECT_FALSE(warm.value().isStale);
    EXPECT_FALSE(warm.value().wasCold);
    EXPECT_EQ(provider->fetches, before);
    EXPECT_EQ(get(browser->stats()).cacheHits, 1);
    EXPECT_DOUBLE_EQ(get(browser->stats()).hitRate(), 0.5);
}

TEST_F(BrowserTest, theHitRateOfNoOpensIsZero)
{
    EXPECT_DOUBLE_EQ(get(browser->stats()).hitRate(), 0.0);
}

TEST_F(BrowserTest, anAgeOfExactlyTheTimeToLiveIsFresh)
{
    openCold("/srv", {file("a")});
    clock->advance(seconds(30));
    EXPECT_FALSE(open("/srv").value().isStale);
    EXPECT_THAT(asked(), IsEmpty());
    clock->advance(std::chrono::nanoseconds(1000));
    EXPECT_TRUE(open("/srv").value().isStale);
}

TEST_F(BrowserTest, aStaleOpenAsksOnceForTheScanThatBothItsReasonsWant)
{
    openCold("/srv", {file("a")});
    clock->advance(seconds(31));
    auto const stale = open("/srv");
    EXPECT_THAT(namesIn(stale), ElementsAre("a"));
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background"));
    EXPECT_EQ(get(browser->stats()).prefetches, 1) << "the one of the cold open; a revalidation is none";
}

TEST_F(BrowserTest, aByProductOfAScanFromHigherUpIsScannedItself)
{
    open("/srv");
    answer({directory("a")});
    answerWith(Listings{{"/srv", listing("/srv", {directory("a")}, clock->now())},
                        {"/srv/a", listing("/srv/a", {file("x")}, clock->now())}});
    auto const below = open("/srv/a");
    EXPECT_THAT(namesIn(below), ElementsAre("x"));
    EXPECT_FALSE(below.value().wasCold);
    EXPECT_THAT(asked(), ElementsAre("/srv/a 3 background"));
}

TEST_F(BrowserTest, aSlowScanIsMadeLessDeepEachTimeUntilThereIsNone)
{
    open("/srv");
    answer({directory("a")});
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background"));
    clock->advance(seconds(2));
    answer({directory("a")});

    clock->advance(seconds(31));
    open("/srv");
    EXPECT_THAT(asked(), ElementsAre("/srv 2 background"));
    clock->advance(seconds(2));
    answer({directory("a")});

    clock->advance(seconds(31));
    open("/srv");
    EXPECT_THAT(asked(), ElementsAre("/srv 1 background"));
    clock->advance(seconds(2));
    answer({directory("a")});

    clock->advance(seconds(31));
    open("/srv");
    EXPECT_THAT(asked(), ElementsAre("/srv 1 background")) << "one level cannot be made less deep";
}

TEST_F(BrowserTest, aScanThatTakesJustTheThresholdKeepsItsDepth)
{
    open("/srv");
    answer({directory("a")});
    clock->advance(std::chrono::milliseconds(1500));
    answer({directory("a")});
    clock->advance(seconds(31));
    open("/srv");
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background"));
}

TEST_F(BrowserTest, aTruncatedRootLowersTheDepthOfADeepScanOnly)
{
    open("/srv");
    answer({file("a")}, Completeness::truncated);
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background")) << "one level was cut, which says nothing of depth";
    answer({file("a")}, Completeness::truncated);
    clock->advance(seconds(31));
    auto const cut = open("/srv");
    EXPECT_TRUE(cut.value().snapshot.truncated());
    EXPECT_THAT(asked(), ElementsAre("/srv 2 background"));
    answer({file("a")}, Completeness::truncated);
    clock->advance(seconds(31));
    open("/srv");
    EXPECT_THAT(asked(), ElementsAre("/srv 1 background"));
}

TEST_F(BrowserTest, aRevalidationThatBringsAPartOnlyAsksForLessUntilItHasTheWhole)
{
    openCold("/srv", {file("old")});
    clock->advance(seconds(31));
    auto const stream = subscribe();
    open("/srv");
    for (auto const *const wanted : {"/srv 3 background", "/srv 2 background", "/srv 1 background"}) {
        ASSERT_THAT(asked(), ElementsAre(wanted));
        answer({file("a")}, Completeness::truncated);
        EXPECT_THAT(names(*get(browser->cached("/srv"))), ElementsAre("old"));
    }
    ASSERT_THAT(asked(), ElementsAre("/srv 1 interactive")) << "what a person waits for has the most room";
    answer({file("a"), file("b")});
    auto const update = get(stream->next());
    ASSERT_TRUE(update);
    EXPECT_THAT(names(*update), ElementsAre("a", "b"));
    EXPECT_THAT(asked(), IsEmpty());

    clock->advance(seconds(31));
    open("/srv");
    EXPECT_THAT(asked(), ElementsAre("/srv 1 interactive")) << "the others are known to be too small";
    answer({file("a")}, Completeness::truncated);
    EXPECT_TRUE(get(browser->cached("/srv"))->truncated()) << "more cannot be had";
}

TEST_F(BrowserTest, aPartIsWhatAPersonGetsWhereTheirOwnDeeperFetchIsCut)
{
    makeBrowser({.interactiveDepth = 2});
    auto const opened = open("/srv");
    ASSERT_THAT(asked(), ElementsAre("/srv 2 interactive"));
    answer({file("a")}, Completeness::truncated);
    EXPECT_TRUE(opened.value().snapshot.truncated());
}

TEST_F(BrowserTest, anOpenBesideAScanThatBringsAPartOnlyGetsTheWhole)
{
    // Two scans that were cut have made the folder one of which one level is scanned.
    get(browser->prefetch("/srv"));
    answer({file("a")}, Completeness::truncated);
    get(browser->prefetch("/srv"));
    answer({file("a")}, Completeness::truncated);
    get(browser->prefetch("/srv"));
    ASSERT_THAT(asked(), ElementsAre("/srv 1 background"));
    auto const opened = open("/srv");
    answer({file("a")}, Completeness::truncated);
    EXPECT_FALSE(opened.isDone());
    ASSERT_THAT(asked(), ElementsAre("/srv 1 interactive"));
    answer({file("a"), file("b")});
    EXPECT_THAT(namesIn(opened), ElementsAre("a", "b"));
}

TEST_F(BrowserTest, aPartOfAFolderIsNotStoredInPlaceOfTheWhole)
{
    useStore();
    open("/srv");
    answer({file("a"), file("b")});
    auto listings = one("/srv", {file("a")}, Completeness::truncated);
    listings.merge(one("/srv/below", {file("c")}));
    answerWith(std::move(listings));
    EXPECT_EQ(store->rows.at({"scripted-cache", "/srv"}).count(), 2U);
    EXPECT_EQ(store->rows.count({"scripted-cache", "/srv/below"}), 1U);
}

TEST_F(BrowserTest, aScanThatBeganEarlierDoesNotBringBackWhatALaterOneSawGone)
{
    useStore();
    open("/srv");
    answer({file("a"), file("gone")});
    ASSERT_THAT(asked(), ElementsAre("/srv 3 background"));
    auto const slow = provider->takeOldest();
    // A file is deleted, and the pane reads the folder again.
    get(browser->invalidate("/srv"));
    auto const again = open("/srv");
    answer({file("a")});
    EXPECT_THAT(namesIn(again), ElementsAre("a"));
    auto const stream = subscribe();

    slow.answer->succeed(one("/srv", {file("a"), file("gone")}));
    loop.drain();
    EXPECT_THAT(names(*get(browser->cached("/srv"))), ElementsAre("a"));
    EXPECT_EQ(store->rows.at({"scripted-cache", "/srv"}).count(), 1U);
    auto const update = loop.start(stream->next());
    get(browser->shutdown());
    EXPECT_FALSE(update.value()) << "nobody was told of it either";
}

TEST_F(BrowserTest, whatWasInvalidatedDoesNotComeBackWithAScanThatWasUnderWay)
{
    open("/srv");
    answer({file("a")});
    ASSERT_THAT(asked(), ElementsAre("/srv 3 background"));
    get(browser->invalidate("/srv"));
    auto listings = one("/srv", {file("a")});
    listings.merge(one("/srv/below", {file("b")}));
    answerWith(std::move(listings));
    EXPECT_FALSE(get(browser->cached("/srv")));
    EXPECT_TRUE(get(browser->cached("/srv/below")));
    // Nothing of this is remembered for later scans.
    openCold("/srv", {file("c")});
    EXPECT_TRUE(get(browser->cached("/srv")));
}

TEST_F(BrowserTest, anOpenBehindAnInvalidationDoesNotJoinAFetchFromBeforeIt)
{
    auto const before = open("/srv");
    get(browser->invalidate("/srv"));
    auto const behind = open("/srv");
    ASSERT_THAT(asked(), ElementsAre("/srv 1 interactive", "/srv 1 interactive"));
    auto const first = provider->takeOldest();
    answer({file("new")});
    EXPECT_THAT(namesIn(behind), ElementsAre("new"));
    first.answer->succeed(one("/srv", {file("old")}));
    loop.drain();
    EXPECT_THAT(namesIn(before), ElementsAre("new")) << "and nobody gets less than is known";
}

TEST_F(BrowserTest, whoWaitedWhileTheFolderWasInvalidatedGetsWhatIsThereNow)
{
    auto const opened = open("/srv");
    get(browser->invalidate("/srv"));
    answer({file("old")});
    EXPECT_FALSE(opened.isDone());
    answer({file("new")});
    EXPECT_THAT(namesIn(opened), ElementsAre("new"));
}

TEST_F(BrowserTest, aPathMissingFromTheAnswerIsNoDirectoryAndTheRestIsCached)
{
    auto const opened = open("/srv/file");
    answerWith(one("/srv", {file("file")}));
    try {
        opened.value();
        FAIL() << "a file was opened as a folder";
    } catch (BrowserError::NotADirectory const &error) {
        EXPECT_EQ(error.path, "/srv/file");
        EXPECT_STREQ(error.what(), "/srv/file is not a directory");
    }
    EXPECT_TRUE(get(browser->cached("/srv")));
}

TEST_F(BrowserTest, anEmptyAnswerIsNoDirectory)
{
    auto const opened = open("/gone");
    answerWith(Listings{});
    EXPECT_THROW(opened.value(), BrowserError::NotADirectory);
    open("/gone");
    EXPECT_THAT(asked(), ElementsAre("/gone 1 interactive")) << "an empty answer must not block the next try";
}

TEST_F(BrowserTest, aFailedRevalidationLeavesTheListing)
{
    openCold("/srv", {file("a")});
    clock->advance(seconds(31));
    open("/srv");
    answerError("link lost");
    auto const again = open("/srv");
    EXPECT_THAT(namesIn(again), ElementsAre("a"));
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background")) << "the next open tries again";
}

TEST_F(BrowserTest, subscribersGetEveryChangedListingOfAScanAndNoOther)
{
    open("/srv");
    answer({directory("a"), directory("b")});
    auto const tree = [&](std::vector<ListedEntry> const &inA) {
        return Listings{{"/srv", listing("/srv", {directory("a"), directory("b")}, clock->now())},
                        {"/srv/a", listing("/srv/a", inA, clock->now())},
                        {"/srv/b", listing("/srv/b", {file("same")}, clock->now())}};
    };
    answerWith(tree({file("old")}));
    auto const stream = subscribe();
    get(browser->refresh("/srv"));
    answerWith(tree({file("new")}));

    auto const update = get(stream->next());
    ASSERT_TRUE(update);
    EXPECT_EQ(update->path(), "/srv/a");
    EXPECT_THAT(names(*update), ElementsAre("new"));
    auto const none = loop.start(stream->next());
    loop.drain();
    EXPECT_FALSE(none.isDone());
    get(browser->shutdown());
    EXPECT_FALSE(none.value());
}

TEST_F(BrowserTest, aListingThatIsOnlyReorderedIsAChange)
{
    openCold("/srv", {file("a"), file("b")});
    auto const stream = subscribe();
    get(browser->refresh("/srv"));
    answer({file("b"), file("a")});
    auto const update = get(stream->next());
    ASSERT_TRUE(update);
    EXPECT_THAT(names(*update), ElementsAre("b", "a"));
}

TEST_F(BrowserTest, anUnchangedListingIsNotPublished)
{
    openCold("/srv", {file("a", 5, 7)});
    auto const stream = subscribe();
    get(browser->refresh("/srv"));
    answer({file("a", 5, 7)});
    get(browser->refresh("/srv"));
    answer({file("a", 5, 8)});
    auto const update = get(stream->next());
    ASSERT_TRUE(update);
    EXPECT_EQ(update->entries()[0].mtime, 8);
}

TEST_F(BrowserTest, aDroppedStreamIsForgotten)
{
    openCold("/srv", {file("a")});
    auto stream = subscribe();
    stream.reset();
    loop.drain();
    auto const other = subscribe();
    get(browser->refresh("/srv"));
    answer({file("b")});
    EXPECT_TRUE(get(other->next()));
}

TEST_F(BrowserTest, aRefreshDoesNotWaitForTheTimeToLive)
{
    openCold("/srv", {file("a")});
    get(browser->refresh("/srv/"));
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background"));
    get(browser->refresh("/srv"));
    EXPECT_EQ(provider->waiting.size(), 1U) << "one scan of one root at one depth at a time";
}

TEST_F(BrowserTest, aRevalidationEndsWithAFetchThatBeganAfterIt)
{
    openCold("/srv", {file("a")});
    get(browser->refresh("/srv"));
    auto const revalidated = loop.start(browser->revalidate("/srv"));
    loop.drain();
    answer({file("b")});
    EXPECT_FALSE(revalidated.isDone()) << "the scan that ran may have been too early";
    ASSERT_EQ(provider->waiting.size(), 1U);
    answer({file("c")});
    ASSERT_TRUE(revalidated.isDone());
    EXPECT_NO_THROW(revalidated.value());
    EXPECT_THAT(names(open("/srv").value().snapshot), ElementsAre("c"));
}

TEST_F(BrowserTest, aRevalidationThatFailsSaysSoAndTheListingStays)
{
    openCold("/srv", {file("a")});
    auto const revalidated = loop.start(browser->revalidate("/srv"));
    loop.drain();
    provider->takeOldest().answer->fail(std::make_exception_ptr(std::runtime_error("gone")));
    loop.drain();
    EXPECT_THROW(revalidated.value(), std::runtime_error);
    EXPECT_THAT(names(open("/srv").value().snapshot), ElementsAre("a"));
}

TEST_F(BrowserTest, aPrefetchIsForWhatIsNotFreshInMemory)
{
    get(browser->prefetch("/srv"));
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background"));
    answer({file("a")});
    get(browser->prefetch("/srv"));
    EXPECT_THAT(asked(), IsEmpty());
    clock->advance(seconds(31));
    get(browser->prefetch("/srv"));
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background"));
    EXPECT_EQ(get(browser->stats()).prefetches, 2);
    EXPECT_EQ(get(browser->stats()).opens, 0);
}

TEST_F(BrowserTest, cachedLooksWithoutAskingOrCounting)
{
    EXPECT_FALSE(get(browser->cached("/srv")));
    openCold("/srv", {file("a")});
    auto const before = provider->fetches;
    auto const held = get(browser->cached("/srv/"));
    ASSERT_TRUE(held);
    EXPECT_THAT(names(*held), ElementsAre("a"));
    EXPECT_EQ(provider->fetches, before);
    EXPECT_EQ(get(browser->stats()).opens, 1);
}

TEST_F(BrowserTest, invalidatingOneFolderMakesItsSiblingsOfTheScanColdToo)
{
    open("/srv");
    answer({directory("a")});
    answerWith(Listings{{"/srv", listing("/srv", {directory("a")}, clock->now())},
                        {"/srv/a", listing("/srv/a", {}, clock->now())}});
    get(browser->invalidate("/srv"));
    EXPECT_FALSE(get(browser->cached("/srv")));
    open("/srv/a");
    EXPECT_THAT(asked(), ElementsAre("/srv/a 1 interactive"));
}

TEST_F(BrowserTest, invalidatingAllForgetsListingsAndLoweredDepths)
{
    open("/srv");
    answer({file("a")});
    clock->advance(seconds(2));
    answer({file("a")});
    get(browser->invalidateAll());
    EXPECT_FALSE(get(browser->cached("/srv")));
    open("/srv");
    answer({file("a")});
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background"));
}

TEST_F(BrowserTest, theBudgetKeepsTheListingJustFetched)
{
    memory = std::make_shared<ListingBudget>(Strand(loop.context()), 10);
    makeBrowser({});
    provider->usefulDepth = 1;
    openCold("/small", {file("abc")});
    openCold("/large", {file(std::string(100, 'x'))});
    EXPECT_FALSE(get(browser->cached("/small")));
    EXPECT_TRUE(get(browser->cached("/large")));
}

TEST_F(BrowserTest, connectAndItsFailureGoToTheProvider)
{
    get(browser->connect());
    EXPECT_EQ(provider->connects, 1);
    provider->connectFails = true;
    EXPECT_THROW(get(browser->connect()), std::runtime_error);
    EXPECT_EQ(browser->providerName(), "Scripted");
    EXPECT_EQ(browser->providerRef(), provider);
}

TEST_F(BrowserTest, shutdownStopsFetchesEndsStreamsAndDisconnects)
{
    openCold("/srv", {file("a")});
    auto const stream = subscribe();
    auto const waiting = open("/other");
    auto const request = provider->waiting.front();
    get(browser->shutdown());

    EXPECT_FALSE(get(stream->next()));
    EXPECT_THROW(waiting.value(), Cancelled);
    EXPECT_EQ(provider->disconnects, 1);
    request.answer->succeed(one("/other", {file("late")}));
    loop.drain();
    EXPECT_FALSE(get(browser->cached("/other"))) << "an answer after the shutdown is dropped";
    EXPECT_TRUE(get(browser->cached("/srv")));
}

TEST_F(BrowserTest, aScanInFlightDoesNotKeepItsBrowserAlive)
{
    auto const local = std::make_shared<ScriptedProvider>();
    auto other = std::make_shared<Browser>(local, Browser::Collaborators{Strand(loop.context()), clock, nullptr},
                                           Browser::Config{});
    loop.start(other->prefetch("/srv"));
    loop.drain();
    ASSERT_EQ(local->waiting.size(), 1U);
    std::weak_ptr<Browser> const gone = other;
    other.reset();
    EXPECT_TRUE(gone.expired());
    local->takeOldest().answer->succeed(one("/srv", {file("a")}));
    loop.drain();
}

TEST_F(BrowserTest, aProviderThatCannotWriteHasNoWriter)
{
    EXPECT_EQ(browser->writer(), nullptr);
}

TEST_F(BrowserTest, aProviderThatCanWriteIsFoundAsAWriterThroughTheOneContract)
{
    auto const writer = std::make_shared<ScriptedWriter>();
    provider = writer;
    makeBrowser({});
    EXPECT_EQ(browser->writer(), writer);
    EXPECT_EQ(std::dynamic_pointer_cast<FileSystemWriter>(browser->providerRef()), writer);
}

TEST_F(BrowserTest, aStoredListingOpensAtOnceAndStaleWhateverItsAge)
{
    useStore();
    store->rows[{"scripted-cache", "/srv"}] = listing("/srv", {file("stored")}, clock->now());
    auto const opened = open("/srv/");
    EXPECT_THAT(namesIn(opened), ElementsAre("stored"));
    EXPECT_TRUE(opened.value().isStale);
    EXPECT_FALSE(opened.value().wasCold);
    EXPECT_THAT(asked(), ElementsAre("/srv 3 background"));
    EXPECT_EQ(get(browser->stats()).diskHits, 1);
}

TEST_F(BrowserTest, aStoreWithoutTheRowIsFollowedByAColdFetch)
{
    useStore();
    auto const opened = open("/srv");
    EXPECT_EQ(store->loads, 1);
    EXPECT_THAT(asked(), ElementsAre("/srv 1 interactive"));
    answer({file("a")});
    EXPECT_TRUE(opened.value().wasCold);
    EXPECT_EQ(get(browser->stats()).diskHits, 0);
}

TEST_F(BrowserTest, aStoredListingNeverReplacesOneThatCameWhileItWasLoaded)
{
    useStore();
    store->rows[{"scripted-cache", "/srv"}] = listing("/srv", {file("stored")}, clock->now());
    auto const first = loop.start(browser->open("/srv"));
    auto const second = loop.start(browser->open("/srv"));
    loop.drain();
    EXPECT_THAT(namesIn(first), ElementsAre("stored"));
    EXPECT_THAT(namesIn(second), ElementsAre("stored"));
    EXPECT_EQ(get(browser->stats()).diskHits, 1);
    EXPECT_EQ(provider->fetches, 1);
}

TEST_F(BrowserTest, aProviderWithoutACacheIdentityHasNoStore)
{
    store = std::make_shared<RecordingStore>();
    makeBrowser({});
    openCold("/srv", {file("a")});
    get(browser->invalidate("/srv"));
    EXPECT_EQ(store->loads, 0);
    EXPECT_THAT(store->saves, IsEmpty());
    EXPECT_THAT(store->removals, IsEmpty());
}

TEST_F(BrowserTest, anUnchangedScanIsStoredOnceAMinute)
{
    useStore();
    openCold("/srv", {file("a")});
    EXPECT_EQ(store->saves.size(), 2U) << "the level that was waited for, and the scan ahead";
    get(browser->refresh("/srv"));
    answer({file("a")});
    EXPECT_EQ(store->saves.size(), 2U);
    clock->advance(seconds(60));
    get(browser->refresh("/srv"));
    answer({file("a")});
    EXPECT_EQ(store->saves.size(), 3U);
}

TEST_F(BrowserTest, aChangedScanIsStoredAtOnce)
{
    useStore();
    openCold("/srv", {file("a")});
    get(browser->refresh("/srv"));
    answer({file("b")});
    EXPECT_EQ(store->saves.size(), 3U);
    EXPECT_THAT(names(store->rows.at({"scripted-cache", "/srv"})), ElementsAre("b"));
}

TEST_F(BrowserTest, invalidatingAFolderDoesNotMakeOthersBeStoredAgain)
{
    useStore();
    for (auto const *const path : {"/srv", "/srv2", "/srv/a"})
        openCold(path, {file("a")});
    auto const before = store->saves.size();
    get(browser->invalidate("/srv"));
    for (auto const *const path : {"/srv2", "/srv/a"}) {
        get(browser->refresh(path));
        answer({file("a")});
    }
    EXPECT_EQ(store->saves.size(), before);
}

TEST_F(BrowserTest, invalidatingForgetsTheStoredRowAndStoresTheNextFetchAtOnce)
{
    useStore();
    openCold("/srv", {file("a")});
    get(browser->invalidate("/srv"));
    EXPECT_THAT(store->removals, ElementsAre(RecordingStore::Key{"scripted-cache", "/srv"}));
    auto const before = store->saves.size();
    openCold("/srv", {file("a")});
    EXPECT_EQ(store->saves.size(), before + 2);
}

TEST_F(BrowserTest, aWaiterThatIsStoppedLeavesTheFetchToTheOthers)
{
    auto const impatient = open("/srv");
    auto const patient = open("/srv");
    impatient.stop();
    loop.drain();
    EXPECT_THROW(impatient.value(), Cancelled);
    answer({file("a")});
    EXPECT_THAT(namesIn(patient), ElementsAre("a"));
}

TEST_F(BrowserTest, aFetchThatItsCallerHasLeftIsCachedIfNothingElseIsAwaited)
{
    auto const left = open("/srv");
    left.stop();
    loop.drain();
    EXPECT_THROW(left.value(), Cancelled);
    EXPECT_THAT(asked(), ElementsAre("/srv 1 interactive"));
    answer({file("a")});
    EXPECT_TRUE(get(browser->cached("/srv")));
}

TEST_F(BrowserTest, aFetchThatItsCallerHasLeftIsCancelledWhenTheNextIsAwaited)
{
    auto const left = open("/srv");
    left.stop();
    loop.drain();
    auto const late = provider->waiting.front();
    auto const next = open("/other");
    EXPECT_FALSE(late.answer->succeed({})) << "the provider was stopped";
    provider->takeOldest();
    answer({file("a")});
    EXPECT_THAT(namesIn(next), ElementsAre("a"));
    EXPECT_FALSE(get(browser->cached("/srv")));
}

TEST_F(BrowserTest, aFolderThatIsOpenedAgainAfterItWasLeftIsFetchedAgain)
{
    open("/srv").stop();
    loop.drain();
    open("/other");
    auto const again = open("/srv");
    EXPECT_THAT(asked(), ElementsAre("/srv 1 interactive", "/other 1 interactive", "/srv 1 interactive"));
    provider->takeOldest();
    answer({file("o")});
    while (provider->waiting.front().path != "/srv")
        provider->takeOldest().answer->succeed({});
    answer({file("a")});
    EXPECT_THAT(namesIn(again), ElementsAre("a"));
}

TEST_F(BrowserTest, aRereadThatWaitsForTheOneBeforeKeepsIt)
{
    auto const first = open("/srv");
    auto const reread = loop.start(browser->reread("/srv"));
    loop.drain();
    first.stop();
    loop.drain();
    open("/other");
    answer({file("old")});
    EXPECT_THAT(asked(), testing::Contains("/srv 1 interactive")) << "the reread goes on behind the first";
    while (provider->waiting.front().path != "/srv" || provider->waiting.front().depth != 1)
        provider->takeOldest().answer->succeed({});
    answer({file("new")});
    EXPECT_THAT(namesIn(reread), ElementsAre("new"));
}

TEST_F(BrowserTest, partsOfALongListingReachTheCallerAndNobodyElse)
{
    std::vector<std::size_t> parts;
    auto const stream = subscribe();
    auto const opening =
        loop.start(browser->open("/srv", [&](DirectorySnapshot const &part) { parts.push_back(part.count()); }));
    loop.drain();
    auto const onPart = provider->partTakers.at(0);
    onPart(listing("/srv", {file("a")}, clock->now(), Completeness::truncated));
    loop.drain();
    EXPECT_THAT(parts, ElementsAre(1U));
    EXPECT_FALSE(get(browser->cached("/srv"))) << "a part is not cached";
    answer({file("a"), file("b")});
    EXPECT_THAT(namesIn(opening), ElementsAre("a", "b"));
    onPart(listing("/srv", {file("late")}, clock->now(), Completeness::truncated));
    loop.drain();
    EXPECT_THAT(parts, ElementsAre(1U)) << "behind the whole, no part comes";
    auto const update = loop.start(stream->next());
    loop.drain();
    EXPECT_FALSE(update.isDone()) << "neither was a change for others";
    update.stop();
    loop.drain();
}

} // namespace
} // namespace tw::test
