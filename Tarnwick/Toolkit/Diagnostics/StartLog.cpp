#include "Tarnwick/Toolkit/Diagnostics/StartLog.h"

#include <QLoggingCategory>

#include <cstdint>

#include <time.h>

namespace tw::StartLog {

namespace {

Q_LOGGING_CATEGORY(startLog, "tarnwick.start", QtWarningMsg)

} // namespace

void note(QString const &event)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    auto const microseconds = std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1'000;
    qCDebug(startLog).noquote().nospace() << microseconds << ' ' << event;
}

bool isOn()
{
    return startLog().isDebugEnabled();
}

} // namespace tw::StartLog
