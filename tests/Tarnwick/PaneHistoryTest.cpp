#include "Tarnwick/Panes/PaneHistory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;
using Visit = PaneHistory::Visit;

class PaneHistoryTest : public ::testing::Test {
protected:
    static Visit at(std::string path) { return {"local", std::move(path)}; }

    void visit(std::string path) { history.recordVisit(at(std::move(path))); }

    /// The path gone to, and arrived at; empty at the end of the visits.
    std::string back() { return arrive(history.goBack()); }

    std::string forward() { return arrive(history.goForward()); }

    std::string arrive(std::optional<Visit> const &wanted)
    {
        if (wanted)
            history.recordVisit(*wanted);
        return wanted ? wanted->path : std::string();
    }

    PaneHistory history;
};

TEST_F(PaneHistoryTest, backAndForwardLeadThroughTheVisits)
{
    EXPECT_FALSE(history.canGoBack());
    EXPECT_FALSE(history.canGoForward());
    EXPECT_EQ(back(), "");
    for (auto const *const path : {"/a", "/b", "/c"})
        visit(path);
    EXPECT_EQ(back(), "/b");
    EXPECT_EQ(back(), "/a");
    EXPECT_FALSE(history.canGoBack());
    EXPECT_EQ(back(), "");
    EXPECT_EQ(forward(), "/b");
    EXPECT_TRUE(history.canGoBack());
    EXPECT_EQ(forward(), "/c");
    EXPECT_FALSE(history.canGoForward());
    EXPECT_EQ(forward(), "");
}

TEST_F(PaneHistoryTest, aPlaceThatIsVisitedAgainAtOnceCountsOnce)
{
    visit("/a");
    visit("/a");
    EXPECT_FALSE(history.canGoBack());
}

TEST_F(PaneHistoryTest, theSamePathOfAnotherConnectionIsAnotherPlace)
{
    visit("/a");
    history.recordVisit({"box", "/a"});
    EXPECT_EQ(history.goBack(), at("/a"));
}

TEST_F(PaneHistoryTest, aNewPlaceEndsTheWayForward)
{
    for (auto const *const path : {"/a", "/b", "/c"})
        visit(path);
    back();
    back();
    visit("/d");
    EXPECT_FALSE(history.canGoForward());
    EXPECT_EQ(back(), "/a");
}

TEST_F(PaneHistoryTest, repeatedKeysGoFurtherBeforeTheFirstPlaceIsThere)
{
    for (auto const *const path : {"/a", "/b", "/c"})
        visit(path);
    history.goBack();
    EXPECT_EQ(history.goBack(), at("/a"));
    EXPECT_FALSE(history.canGoBack());
    visit("/a");
    EXPECT_EQ(forward(), "/b");
}

TEST_F(PaneHistoryTest, aPlaceThatIsNotReachedLeavesTheVisitsAsTheyWere)
{
    for (auto const *const path : {"/a", "/b", "/c"})
        visit(path);
    history.goBack();
    history.stay();
    EXPECT_FALSE(history.canGoForward());
    EXPECT_EQ(history.goBack(), at("/b"));
}

TEST_F(PaneHistoryTest, whoSetsOutForAnotherPlaceOnTheWayBackComesBehindThePlaceOnShow)
{
    for (auto const *const path : {"/a", "/b", "/c"})
        visit(path);
    history.goBack();
    history.setOutFor(at("/d"));
    visit("/d");
    EXPECT_EQ(back(), "/c");
}

TEST_F(PaneHistoryTest, ofTooManyVisitsTheOldestIsForgotten)
{
    for (int number = 0; number < 250; ++number)
        visit("/" + std::to_string(number));
    std::size_t steps = 0;
    std::string oldest;
    while (history.canGoBack()) {
        oldest = back();
        ++steps;
    }
    EXPECT_EQ(steps, PaneHistory::mostVisits - 1);
    EXPECT_EQ(oldest, "/50");
    EXPECT_EQ(back(), "");
}

TEST_F(PaneHistoryTest, recentVisitsNameEachPlaceOnceTheNewestFirst)
{
    for (auto const *const path : {"/a", "/b", "/a", "/c"})
        visit(path);
    EXPECT_THAT(history.recentVisits(10), ElementsAre(at("/c"), at("/a"), at("/b")));
    EXPECT_THAT(history.recentVisits(2), SizeIs(2));
    EXPECT_THAT(PaneHistory().recentVisits(2), SizeIs(0));
}

TEST_F(PaneHistoryTest, goingToAVisitLeadsToTheNewestOfItsPlace)
{
    for (auto const *const path : {"/a", "/b", "/a", "/c"})
        visit(path);
    history.goTo(at("/a"));
    visit("/a");
    EXPECT_EQ(forward(), "/c");
    history.goTo(at("/gone"));
    EXPECT_EQ(back(), "/a") << "a place that was not visited leads nowhere";
}

} // namespace
} // namespace tw::test
