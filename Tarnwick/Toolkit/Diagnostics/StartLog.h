#pragma once

#include <QString>

namespace tw {

/// Writes the moments that benchmarks and end-to-end tests wait for: one line each on standard error, with the
/// microseconds of CLOCK_MONOTONIC, so that another process can compare them with its own.
///
/// Off unless QT_LOGGING_RULES has "tarnwick.start.debug=true".
namespace StartLog {

void note(QString const &event);

/// True if a note is written at all.
bool isOn();

} // namespace StartLog

} // namespace tw
