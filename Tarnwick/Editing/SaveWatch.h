#pragma once

#include "TWEngine/Editing/EditStaging.h"

#include <chrono>
#include <optional>

namespace tw {

/// Decides when a save in an editor has ended: the copy has not changed for a second.
///
/// So an editor that writes in several steps, or replaces the file through a temporary name, causes one upload. The
/// time is that of a clock that never goes back: nothing depends on the machine's date.
class SaveWatch {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Stamp = EditStaging::Stamp;

    static constexpr std::chrono::milliseconds settleTime = std::chrono::seconds(1);

    enum class Finding {
        nothing,
        changed, ///< since the last look; the wait begins again
        settled, ///< to be uploaded now
    };

    /// A missing stamp is a file that is not there: it is being replaced.
    explicit SaveWatch(std::optional<Stamp> seen) : lastSeen(seen) {}

    Finding tick(std::optional<Stamp> now, Time time);

    bool isPending() const noexcept { return pendingSince.has_value(); }

private:
    std::optional<Stamp> lastSeen;
    std::optional<Time> pendingSince; ///< a change that was not uploaded yet
};

} // namespace tw
