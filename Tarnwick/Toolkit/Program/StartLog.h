#pragma once

#include <QString>

#include <cstdint>

namespace tw {

/// The moments of the program's start, for whoever measures it: one line each on standard error, with the microseconds
/// of CLOCK_MONOTONIC, so that a benchmark can compare them with the moment at which it started the program.
///
/// Off unless QT_LOGGING_RULES has "tarnwick.start.debug=true".
namespace StartLog {

/// CLOCK_MONOTONIC.
std::int64_t microsecondsNow();

void note(QString const &event);

/// An event that was over before there was a QApplication: its rules are what turns the log on.
void note(QString const &event, std::int64_t microseconds);

/// Whether a note is written at all.
bool isOn();

} // namespace StartLog

} // namespace tw
