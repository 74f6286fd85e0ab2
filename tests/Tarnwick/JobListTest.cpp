#include "Tarnwick/Transfers/JobList.h"

#include "Tarnwick/Transfers/JobNotice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class JobListTest : public testing::Test {
protected:
    Job::Time now{1h};
    JobList works{[this] { return now; }};
};

TEST_F(JobListTest, workIsUnderWayUntilItEnds)
{
    auto const first = works.begin("Copy 1 item…", [] {});
    auto const second = works.begin("Move 1 item…", [] {});
    EXPECT_THAT(works.underWay(), ElementsAre(first, second));
    works.end(first);
    works.end(first);
    EXPECT_THAT(works.underWay(), ElementsAre(second));
}

TEST_F(JobListTest, workBeginsOnItsSheetAndCanGoToTheBackgroundAndBack)
{
    auto const work = works.begin("Copy", [] {});
    EXPECT_THAT(works.inBackground(), IsEmpty());
    works.move(work, Job::Place::background);
    EXPECT_THAT(works.inBackground(), ElementsAre(work));
    works.move(work, Job::Place::sheet);
    EXPECT_THAT(works.inBackground(), IsEmpty());
}

TEST_F(JobListTest, observersHearOfEachChangeOnce)
{
    auto changes = 0;
    works.observe([&] { ++changes; });
    auto const work = works.begin("Copy", [] {});
    works.move(work, Job::Place::background);
    works.move(work, Job::Place::background);
    works.end(work);
    works.end(work);
    EXPECT_EQ(changes, 3);
}

TEST_F(JobListTest, workIsCancelledOnce)
{
    auto cancels = 0;
    auto const work = works.begin("Copy", [&] { ++cancels; });
    EXPECT_FALSE(works.lookAt(*work).isCancelled);
    work->cancel();
    work->cancel();
    EXPECT_EQ(cancels, 1);
    EXPECT_TRUE(works.lookAt(*work).isCancelled);
}

TEST_F(JobListTest, workMayEndWhileAllIsCancelled)
{
    std::shared_ptr<Job> first;
    first = works.begin("Copy", [&] { works.end(first); });
    auto cancels = 0;
    works.begin("Move", [&] { ++cancels; });
    works.cancelAll();
    EXPECT_EQ(works.underWay().size(), 1U);
    EXPECT_EQ(cancels, 1);
}

TEST_F(JobListTest, anEmptyItemStandsForTheOneBefore)
{
    auto const work = works.begin("Copy", [] {});
    works.update(*work, {.bytes = 1, .item = "a"});
    works.update(*work, {.bytes = 2});
    EXPECT_EQ(works.lookAt(*work).state.item, "a");
    EXPECT_EQ(works.lookAt(*work).state.bytes, 2);
}

TEST_F(JobListTest, workThatNoLongerReportsBecomesSlower)
{
    auto const work = works.begin("Copy", [] {});
    works.update(*work, {.bytes = 0, .total = 4000});
    now += 1s;
    works.update(*work, {.bytes = 1000, .total = 4000});
    EXPECT_EQ(works.lookAt(*work).speed, 1000.0);
    EXPECT_EQ(works.lookAt(*work).left, 3s);
    now += 1s;
    EXPECT_EQ(works.lookAt(*work).speed, 500.0);
}

TEST_F(JobListTest, aTotalThatHasBeenPassedIsNotKnownAnyMore)
{
    auto const work = works.begin("Copy", [] {});
    works.update(*work, {.bytes = 1000, .total = 4000, .files = 1, .totalFiles = 3});
    now += 1s;
    works.update(*work, {.bytes = 5000, .total = 4000, .files = 2, .totalFiles = 3});
    auto const look = works.lookAt(*work);
    EXPECT_EQ(look.state.text(), "4.9K");
    EXPECT_EQ(look.state.totalFiles, 3);
    EXPECT_EQ(look.state.share(), std::nullopt);
    EXPECT_EQ(look.speed, 4000.0);
    EXPECT_EQ(look.left, std::nullopt);
}

TEST_F(JobListTest, workThatTellsNothingBeforeItsEndIsNotCalledStalled)
{
    auto const work = works.begin("Copy", [] {});
    works.update(*work, {.item = "2 item(s) — server-side copy"});
    now += 10s;
    EXPECT_EQ(works.lookAt(*work).speed, std::nullopt);
    EXPECT_EQ(works.lookAt(*work).state.text(), "");
}

TEST_F(JobListTest, itsEndIsPassedOnIfItSaysHowItEnded)
{
    std::vector<JobList::End> ends;
    works.onEnd = [&](JobList::End const &end) { ends.push_back(end); };
    works.end(works.begin("Copy 1 item…", [] {}));
    auto const work = works.begin("Copy 2 items…", [] {});
    now += 30s;
    work->conclusion = "2 items copied";
    works.end(work);
    ASSERT_EQ(ends.size(), 1U);
    EXPECT_EQ(ends.front().conclusion, "2 items copied");
    EXPECT_EQ(ends.front().duration, 30s);
}

TEST(JobNoticeTest, theEndOfLongWorkIsAnnouncedToAUserWhoLooksElsewhere)
{
    JobList::End end{.title = "Copy 2 items…", .conclusion = "2 items copied", .duration = 21s};
    auto const notice = JobNotice::about(end, Attention::elsewhere);
    ASSERT_TRUE(notice);
    EXPECT_EQ(notice->summary, "Copy 2 items");
    EXPECT_EQ(notice->body, "2 items copied");
    EXPECT_FALSE(JobNotice::about(end, Attention::given));
    end.duration = 20s;
    EXPECT_FALSE(JobNotice::about(end, Attention::elsewhere));
}

} // namespace
} // namespace tw::test
