#include "Tarnwick/Toolkit/Program/JobWatch.h"

#include "tests/ui/FakeLogind.h"
#include "tests/ui/FakeNotifications.h"
#include "tests/ui/PrivateBus.h"
#include "tests/ui/QtLoop.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;

class JobWatchTest : public testing::Test {
protected:
    JobWatchTest()
    {
        watch.isLookedAt = [this] { return isLookedAt; };
    }

    void workFor(std::chrono::seconds duration, std::string const &conclusion)
    {
        auto const work = works->begin("Copy 2 items…", [] {});
        now += duration;
        work->conclusion = conclusion;
        works->end(work);
    }

    PrivateBus bus;
    FakeLogind logind{bus.connect(), QStringLiteral("1")};
    FakeNotifications desktop{bus.connect()};
    QDBusConnection connection = bus.connect();
    Job::Time now{1h};
    bool isLookedAt = false;
    std::shared_ptr<JobList> works = std::make_shared<JobList>([this] { return now; });
    JobWatch watch{works, [this] { return connection; }};
};

TEST_F(JobWatchTest, whileAnyWorkIsUnderWayTheMachineDoesNotSleep)
{
    watch.setSystemBus(connection);
    auto const first = works->begin("Copy", [] {});
    auto const second = works->begin("Move", [] {});
    processUntil([&] { return logind.heldLocks() == 1; });
    EXPECT_EQ(logind.locks(), QStringList{QStringLiteral("sleep block")});
    works->end(first);
    processPosted();
    EXPECT_EQ(logind.heldLocks(), 1);
    works->end(second);
    processUntil([&] { return logind.heldLocks() == 0; });
}

TEST_F(JobWatchTest, workThatBeganBeforeTheBusWasThereCountsToo)
{
    auto const work = works->begin("Copy", [] {});
    watch.setSystemBus(connection);
    processUntil([&] { return logind.heldLocks() == 1; });
    works->end(work);
    processUntil([&] { return logind.heldLocks() == 0; });
}

TEST_F(JobWatchTest, aLockThatComesWhenTheWorkHasEndedIsGivenBack)
{
    watch.setSystemBus(connection);
    works->end(works->begin("Copy", [] {}));
    processUntil([&] { return logind.locks().size() == 1 && logind.heldLocks() == 0; });
}

TEST_F(JobWatchTest, withoutABusNothingHappens)
{
    watch.setSystemBus(QDBusConnection(QString()));
    connection = QDBusConnection(QString());
    workFor(30s, "2 items copied");
    processPosted();
    EXPECT_TRUE(logind.locks().isEmpty());
    EXPECT_TRUE(desktop.shown.isEmpty());
}

TEST_F(JobWatchTest, theEndOfLongWorkIsAnnouncedWhileTheUserLooksElsewhere)
{
    workFor(30s, "a<b: 2 items copied");
    processUntil([&] { return !desktop.shown.isEmpty(); });
    EXPECT_EQ(desktop.shown, QStringList{QStringLiteral("Copy 2 items: a&lt;b: 2 items copied")});
}

TEST_F(JobWatchTest, theEndOfShortWorkAndOneThatTheUserSeesAreNot)
{
    workFor(5s, "short");
    isLookedAt = true;
    workFor(30s, "seen");
    isLookedAt = false;
    workFor(30s, "long");
    processUntil([&] { return !desktop.shown.isEmpty(); });
    EXPECT_EQ(desktop.shown, QStringList{QStringLiteral("Copy 2 items: long")});
}

} // namespace
} // namespace tw::test
