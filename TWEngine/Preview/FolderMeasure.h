#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Transfer/Measure.h"

#include <functional>
#include <string>

namespace tw {

class FileLanes;

/// Adds up what lies below a folder of this machine, and says how far it has come.
namespace FolderMeasure {

/// Called on the caller's executor with the sum so far, after at least `step` each.
using Progress = std::function<void(Measure const &sum)>;

constexpr std::chrono::milliseconds step{250};

/// The whole sum. What cannot be looked at is left out. `lanes` outlive the task.
///
/// Cancellation: a stop ends the walk at the next file.
Task<Measure> run(FileLanes &lanes, std::string folder, Progress progress);

} // namespace FolderMeasure

} // namespace tw
