#include "tests/ui/QtLoop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>

#include <chrono>

namespace tw::test {

namespace {

/// Reached by a hang only: a loaded machine with sanitizers is allowed to be very slow.
constexpr std::chrono::milliseconds hangLimit = std::chrono::minutes(2);

/// A condition may come about on another thread, which wakes nobody here.
constexpr std::chrono::milliseconds betweenLooks{5};

} // namespace

bool processUntil(std::function<bool()> const &condition)
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    QTimer look;
    look.start(betweenLooks);
    while (!condition()) {
        if (sinceStart.hasExpired(hangLimit.count())) {
            ADD_FAILURE() << "the condition waited for did not come about";
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void processPosted()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

} // namespace tw::test
