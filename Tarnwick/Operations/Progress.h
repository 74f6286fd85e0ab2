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
};

} // namespace tw
