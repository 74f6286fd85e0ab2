#pragma once

#include "Tarnwick/Operations/ProgressState.h"

namespace tw {

/// Work under way, shown to the user while this exists.
///
/// Threads: main context only.
/// Lifetime: its caller's. The window that it is shown over may go first.
class Progress {
public:
    virtual ~Progress() = default;

    virtual void update(ProgressState const &state) = 0;

    /// How the work has ended, in a sentence, for a user who looks at something else by now.
    virtual void conclude(std::string words) { static_cast<void>(words); }
};

} // namespace tw
