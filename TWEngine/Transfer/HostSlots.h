#pragma once

#include "TWCore/Async/Task.h"

#include <cstddef>
#include <memory>
#include <string>

namespace tw {

/// How many ssh clients of transfers a host has at a time. A server takes 10 sessions a connection as it is delivered,
/// and the panes need theirs.
///
/// Threads: may be used from anywhere.
class HostSlots {
public:
    static constexpr std::size_t atOnce = 4;

    /// The slots of this process.
    static std::shared_ptr<HostSlots> const &shared();

    HostSlots();

    /// Given back when the last copy goes.
    using Slot = std::shared_ptr<void>;

    /// Waits for a slot, in the order of the calls. Throws Cancelled when stopped.
    Task<Slot> take(std::string host);

private:
    struct State;

    static Task<Slot> wait(std::shared_ptr<State> state, std::string host);

    std::shared_ptr<State> const state;
};

} // namespace tw
