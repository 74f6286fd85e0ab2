#include "Tarnwick/Toolkit/Program/StartLog.h"

#include <QLoggingCategory>

#include <time.h>

namespace tw::StartLog {

namespace {

Q_LOGGING_CATEGORY(startLog, "tarnwick.start", QtWarningMsg)

} // namespace

std::int64_t microsecondsNow()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1'000;
}

void note(QString const &event)
{
    note(event, microsecondsNow());
}

void note(QString const &event, std::int64_t microseconds)
{
    qCDebug(startLog).noquote().nospace() << microseconds << ' ' << event;
}

bool isOn()
{
    return startLog().isDebugEnabled();
}

} // namespace tw::StartLog
