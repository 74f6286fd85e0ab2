#include "Tarnwick/Toolkit/Program/SessionWatch.h"

#include "tests/ui/FakeLogind.h"
#include "tests/ui/PrivateBus.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/ScopedVariable.h"

#include <QCoreApplication>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using enum SessionEvent;

class SessionWatchTest : public testing::Test {
protected:
    /// Comes to know of everything that the machine tells.
    void watch()
    {
        watcher.emplace(bus.connect(), QStringLiteral("7"), [this](SessionEvent event) { heard.push_back(event); });
        // The session's changes are heard only once it is known which one it is. Asking costs nothing, so it is asked
        // for until it answers.
        processUntil([this] {
            logind.changeSession(active, false);
            return !heard.empty();
        });
        heard.clear();
        // Every further change of those that were sent comes before what is sent from now on.
        logind.prepareForSleep(true);
        processUntil([this] { return !heard.empty() && heard.back() == sleep; });
        heard.clear();
    }

    void waitFor(std::size_t count)
    {
        processUntil([&] { return heard.size() >= count; });
    }

    static inline QString const active = QStringLiteral("Active");

    PrivateBus bus;
    FakeLogind logind{bus.connect(), QStringLiteral("7")};
    std::vector<SessionEvent> heard;
    std::optional<SessionWatch> watcher;
};

TEST_F(SessionWatchTest, theMachineGoesToSleepAndWakesUp)
{
    watch();
    logind.prepareForSleep(true);
    logind.prepareForSleep(false);
    waitFor(2);
    EXPECT_THAT(heard, ElementsAre(sleep, wake));
}

TEST_F(SessionWatchTest, aShutdownThatIsTakenBackIsNoEvent)
{
    watch();
    logind.prepareForShutdown(true);
    logind.prepareForShutdown(false);
    logind.prepareForSleep(true);
    waitFor(2);
    EXPECT_THAT(heard, ElementsAre(powerOff, sleep));
}

TEST_F(SessionWatchTest, ourSessionGoesAndComesBackAndOthersAreNothingToUs)
{
    watch();
    logind.changeSession(active, false);
    logind.changeAnotherSession(active, true);
    logind.changeSession(QStringLiteral("IdleHint"), true);
    logind.changeSession(active, true);
    waitFor(2);
    EXPECT_THAT(heard, ElementsAre(handedOver, back));
}

TEST_F(SessionWatchTest, withoutABusNothingIsHeard)
{
    SessionWatch const deaf(QDBusConnection(QString()), QStringLiteral("7"), [](SessionEvent) { FAIL(); });
    QCoreApplication::processEvents();
    EXPECT_EQ(logind.questions(), 0U);
}

TEST(SessionOfThisProcessTest, isThatOfTheEnvironmentOrLeftToLogind)
{
    {
        ScopedVariable const named("XDG_SESSION_ID", "12");
        EXPECT_EQ(SessionWatch::sessionOfThisProcess(), QStringLiteral("12"));
    }
    ScopedVariable const none("XDG_SESSION_ID", "");
    EXPECT_EQ(SessionWatch::sessionOfThisProcess(), QStringLiteral("auto"));
}

} // namespace
} // namespace tw::test
