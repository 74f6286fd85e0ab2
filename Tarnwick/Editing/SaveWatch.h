#pragma once

#include "TWEngine/Editing/EditStaging.h"

#include <chrono>
#include <optional>

namespace tw {

/// Decides when a save in an editor has ended: the copy has not changed for a second.
///
/// So an editor that writes in several steps, or replaces the file through a temporary name, causes one upload. Times
/// are those of a clock that never goes back: nothing depends on the date of the machine.
class SaveWatch {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Stamp = EditStaging::Stamp;

    static constexpr std::chrono::milliseconds settleTime = std::chrono::seconds(1);

    enum class Finding {
        nothing,
        changed, ///< since the last look; the second begins again
        settled, ///< to be uploaded now
    };

    explicit SaveWatch(std::optional<Stamp> seen) : lastSeen(seen) {}

    /// Without a stamp the file does not exist at the moment: it is being replaced.
    Finding tick(std::optional<Stamp> now, Time time);

    /// The time that a change has left to settle. Nothing if there is no change, or the time is over.
    std::optional<std::chrono::milliseconds> untilSettled(Time time) const;

private:
    std::optional<Stamp> lastSeen;
    std::optional<Time> pendingSince; ///< the last change, if it has not settled
};

} // namespace tw
