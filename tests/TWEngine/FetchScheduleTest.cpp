#include "TWEngine/Browsing/FetchSchedule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Reason = FetchSchedule::Reason;
using Reach = ForgottenPaths::Reach;

class FetchScheduleTest : public ::testing::Test {
protected:
    /// The roots of the fetches that begin when that scan is wanted.
    std::vector<std::string> want(std::string root, Reason reason, int depth = 3)
    {
        return begun(schedule.want({.root = std::move(root), .depth = depth, .reason = reason}, now));
    }

    std::vector<std::string> end(std::uint64_t number) { return begun(schedule.end(number, now)); }

    std::vector<std::string> begun(FetchSchedule::Orders const &orders)
    {
        std::vector<std::string> roots;
        for (auto const &fetch : orders.begin) {
            roots.push_back(fetch.root);
            numbers[fetch.root] = fetch.number;
        }
        cancelled = orders.cancel;
        return roots;
    }

    FetchSchedule schedule;
    FetchSchedule::Time now{std::chrono::hours(1)};
    std::map<std::string, std::uint64_t> numbers; ///< of the last fetch of a root
    std::vector<std::uint64_t> cancelled;         ///< by the last call
};

TEST_F(FetchScheduleTest, anAwaitedFetchIsJoinedByLaterCallers)
{
    auto const fetch = schedule.beginAwaited("/a", 1, now);
    EXPECT_TRUE(fetch.hasAllRoom());
    ASSERT_TRUE(schedule.joinable("/a", 1));
    EXPECT_EQ(schedule.joinable("/a", 1)->number, fetch.number);
    EXPECT_FALSE(schedule.joinable("/a", 2));
    EXPECT_FALSE(schedule.joinable("/b", 1));
    end(fetch.number);
    EXPECT_FALSE(schedule.joinable("/a", 1));
}

TEST_F(FetchScheduleTest, aCallerDoesNotJoinAScanInTheBackground)
{
    want("/a", Reason::cursor, 1);
    EXPECT_FALSE(schedule.joinable("/a", 1));
}

TEST_F(FetchScheduleTest, aCallerJoinsARevalidationThatHasAllTheRoom)
{
    schedule.want({.root = "/a", .depth = 1, .priority = FetchPriority::interactive}, now);
    EXPECT_TRUE(schedule.joinable("/a", 1));
}

TEST_F(FetchScheduleTest, aCallerDoesNotJoinAFetchFromBeforeThePathWasForgotten)
{
    auto const before = schedule.beginAwaited("/a", 1, now);
    schedule.forget("/a", Reach::path);
    EXPECT_FALSE(schedule.joinable("/a", 1));
    EXPECT_TRUE(schedule.isStale("/a", before.number));
    auto const behind = schedule.beginAwaited("/a", 1, now);
    ASSERT_TRUE(schedule.joinable("/a", 1));
    EXPECT_EQ(schedule.joinable("/a", 1)->number, behind.number);
}

TEST_F(FetchScheduleTest, ofTheCursorsWishesTheRunningOneAndTheNewestAreKept)
{
    EXPECT_THAT(want("/1", Reason::cursor), ElementsAre("/1"));
    for (int row = 2; row <= 2000; ++row)
        EXPECT_THAT(want("/" + std::to_string(row), Reason::cursor), IsEmpty());
    EXPECT_EQ(schedule.runningCount(), 1U);
    EXPECT_EQ(schedule.waitingCount(), 1U);
    EXPECT_THAT(end(numbers["/1"]), ElementsAre("/2000"));
    EXPECT_THAT(end(numbers["/2000"]), IsEmpty());
}

TEST_F(FetchScheduleTest, aCursorThatComesBackToTheRunningScanLeavesNoneWaiting)
{
    want("/1", Reason::cursor);
    want("/2", Reason::cursor);
    EXPECT_THAT(want("/1", Reason::cursor), IsEmpty());
    EXPECT_THAT(end(numbers["/1"]), IsEmpty());
}

TEST_F(FetchScheduleTest, anAwaitedFetchBeginsWhateverElseRuns)
{
    want("/1", Reason::cursor);
    for (int index = 0; index < 100; ++index)
        want("/behind" + std::to_string(index), Reason::revalidate);
    auto const fetch = schedule.beginAwaited("/a", 1, now);
    EXPECT_TRUE(schedule.isRunning(fetch.number));
}

TEST_F(FetchScheduleTest, theCursorsWishForAFolderThatIsEnteredIsDropped)
{
    want("/1", Reason::cursor);
    want("/2", Reason::cursor);
    schedule.beginAwaited("/2", 1, now);
    EXPECT_THAT(end(numbers["/1"]), IsEmpty());
}

TEST_F(FetchScheduleTest, oneScanOfOneRootRunsAtATime)
{
    EXPECT_THAT(want("/a", Reason::revalidate), ElementsAre("/a"));
    auto const first = numbers["/a"];
    EXPECT_THAT(want("/a", Reason::ahead), IsEmpty());
    EXPECT_THAT(want("/a", Reason::cursor), IsEmpty());
    EXPECT_EQ(schedule.waitingCount(), 0U) << "the running scan does the same";
    EXPECT_THAT(want("/a", Reason::revalidate, 1), IsEmpty());
    EXPECT_THAT(end(first), ElementsAre("/a")) << "one of another depth waits for its end";
}

TEST_F(FetchScheduleTest, aDeepScanRunsBesideTheListingThatACallerWaitsFor)
{
    schedule.beginAwaited("/a", 1, now);
    EXPECT_THAT(want("/a", Reason::ahead), ElementsAre("/a"));
    EXPECT_THAT(want("/a", Reason::revalidate, 1), IsEmpty()) << "which the caller's does";
}

TEST_F(FetchScheduleTest, aScanWhoseAnswerWillBeStaleIsFollowedByOneMore)
{
    want("/a", Reason::ahead);
    auto const first = numbers["/a"];
    for (int repeat = 0; repeat < 100; ++repeat) {
        schedule.forget("/a", Reach::path);
        EXPECT_THAT(want("/a", Reason::ahead), IsEmpty()) << "not beside the first";
    }
    EXPECT_EQ(schedule.waitingCount(), 1U);
    EXPECT_THAT(end(first), ElementsAre("/a"));
    EXPECT_FALSE(schedule.isStale("/a", numbers["/a"]));
}

TEST_F(FetchScheduleTest, scansBehindListingsHaveAFixedNumberOfPlacesAndTheNewestIsNext)
{
    for (std::size_t index = 0; index < FetchSchedule::placesBehind; ++index)
        EXPECT_EQ(want("/running" + std::to_string(index), Reason::revalidate).size(), 1U);
    EXPECT_THAT(want("/left", Reason::revalidate), IsEmpty());
    EXPECT_THAT(want("/on show", Reason::revalidate), IsEmpty());
    EXPECT_THAT(want("/cursor", Reason::cursor), ElementsAre("/cursor")) << "it has a place of its own";
    EXPECT_THAT(end(numbers["/running0"]), ElementsAre("/on show"));
    EXPECT_THAT(end(numbers["/running1"]), ElementsAre("/left"));
}

TEST_F(FetchScheduleTest, theOldestOfTooManyWaitingScansIsDropped)
{
    for (std::size_t index = 0; index < FetchSchedule::placesBehind; ++index)
        want("/running" + std::to_string(index), Reason::revalidate);
    want("/oldest", Reason::revalidate);
    for (std::size_t index = 0; index < FetchSchedule::waitingBehind; ++index)
        want("/" + std::to_string(index), Reason::revalidate);
    EXPECT_EQ(schedule.waitingCount(), FetchSchedule::waitingBehind);
    std::vector<std::string> later;
    auto next = end(numbers["/running0"]);
    while (!next.empty()) {
        later.push_back(next.front());
        next = end(numbers[next.front()]);
    }
    EXPECT_EQ(later.size(), FetchSchedule::waitingBehind);
    EXPECT_EQ(later.front(), "/" + std::to_string(FetchSchedule::waitingBehind - 1));
    EXPECT_EQ(later.back(), "/0");
}

TEST_F(FetchScheduleTest, aWaitingScanIsWaitedForOnce)
{
    for (std::size_t index = 0; index < FetchSchedule::placesBehind; ++index)
        want("/running" + std::to_string(index), Reason::revalidate);
    want("/a", Reason::ahead);
    want("/a", Reason::revalidate);
    EXPECT_EQ(schedule.waitingCount(), 1U);
    EXPECT_THAT(want("/a", Reason::cursor), IsEmpty()) << "it waits already";
}

TEST_F(FetchScheduleTest, aScanThatIsStuckIsCancelledWhenItsPlaceIsWanted)
{
    want("/dead", Reason::cursor);
    now += FetchSchedule::stuckAfter;
    want("/2", Reason::cursor);
    EXPECT_THAT(cancelled, IsEmpty());
    now += std::chrono::milliseconds(1);
    want("/3", Reason::cursor);
    EXPECT_THAT(cancelled, ElementsAre(numbers["/dead"]));
    EXPECT_THAT(end(numbers["/dead"]), ElementsAre("/3")) << "its place is free when it has ended";
}

TEST_F(FetchScheduleTest, aScanThatACallerMayHaveJoinedIsNeverCancelled)
{
    for (std::size_t index = 0; index < FetchSchedule::placesBehind; ++index) {
        schedule.want({.root = "/" + std::to_string(index), .depth = 1, .priority = FetchPriority::interactive}, now);
    }
    now += 2 * FetchSchedule::stuckAfter;
    want("/next", Reason::revalidate);
    EXPECT_THAT(cancelled, IsEmpty());
}

TEST_F(FetchScheduleTest, whatWasForgottenIsRememberedWhileAFetchFromBeforeRuns)
{
    want("/a", Reason::ahead);
    auto const first = numbers["/a"];
    schedule.forget("/a/b", Reach::tree);
    want("/c", Reason::ahead);
    end(numbers["/c"]);
    EXPECT_TRUE(schedule.isStale("/a/b/c", first));
    EXPECT_FALSE(schedule.isStale("/a/b/c", schedule.beginAwaited("/a/b/c", 1, now).number));
}

TEST_F(FetchScheduleTest, aClearedScheduleKnowsNoFetches)
{
    want("/1", Reason::cursor);
    want("/2", Reason::cursor);
    schedule.clear();
    EXPECT_FALSE(schedule.isRunning(numbers["/1"]));
    EXPECT_EQ(schedule.runningCount(), 0U);
    EXPECT_EQ(schedule.waitingCount(), 0U);
    EXPECT_GT(schedule.beginAwaited("/1", 1, now).number, numbers["/1"]) << "numbers are not used again";
}

TEST_F(FetchScheduleTest, anAwaitedFetchThatAllItsCallersHaveLeftGivesWayToTheNext)
{
    auto const fetch = schedule.beginAwaited("/a", 1, now);
    schedule.join(fetch.number);
    schedule.join(fetch.number);
    schedule.leave(fetch.number);
    EXPECT_THAT(schedule.cancelLeft(), IsEmpty()) << "one caller is still there";
    schedule.leave(fetch.number);
    ASSERT_TRUE(schedule.joinable("/a", 1)) << "its answer is worth waiting for until something else is";
    EXPECT_THAT(schedule.cancelLeft(), ElementsAre(fetch.number));
    EXPECT_THAT(schedule.cancelLeft(), IsEmpty()) << "once is enough";
    EXPECT_TRUE(schedule.isRunning(fetch.number));
    EXPECT_FALSE(schedule.joinable("/a", 1)) << "it brings nothing any more";
}

TEST_F(FetchScheduleTest, aFetchThatIsJoinedAgainIsNotLeft)
{
    auto const fetch = schedule.beginAwaited("/a", 1, now);
    schedule.join(fetch.number);
    schedule.leave(fetch.number);
    schedule.join(fetch.number);
    EXPECT_THAT(schedule.cancelLeft(), IsEmpty());
}

TEST_F(FetchScheduleTest, aScanInTheBackgroundGivesWayOnlyIfItHasAllTheRoom)
{
    want("/small", Reason::revalidate);
    auto const wide = schedule.want({.root = "/wide", .depth = 1, .priority = FetchPriority::interactive}, now);
    EXPECT_THAT(schedule.cancelLeft(), ElementsAre(wide.begin.at(0).number)) << "it would hold the next one up";
}

TEST_F(FetchScheduleTest, aFetchThatHasEndedIsLeftInPeace)
{
    auto const fetch = schedule.beginAwaited("/a", 1, now);
    schedule.join(fetch.number);
    end(fetch.number);
    schedule.leave(fetch.number);
    schedule.join(fetch.number);
    EXPECT_THAT(schedule.cancelLeft(), IsEmpty());
}

TEST_F(FetchScheduleTest, aCancelledFetchCoversNoWish)
{
    schedule.beginAwaited("/a", 1, now);
    ASSERT_EQ(schedule.cancelLeft().size(), 1U);
    want("/a", Reason::revalidate, 1);
    EXPECT_EQ(schedule.waitingCount(), 1U) << "it waits for the end of the cancelled one";
}

} // namespace
} // namespace tw::test
