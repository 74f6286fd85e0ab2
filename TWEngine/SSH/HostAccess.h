#pragma once

#include "TWCore/Provider/HostStatus.h"
#include "TWEngine/Runtime/UpdateStream.h"

namespace tw {

/// A provider whose host has to be reached and logged in to. Found with `dynamic_cast`, as CommandHost is.
///
/// Threads, lifetime: as FileSystemProvider.
class HostAccess {
public:
    virtual ~HostAccess() = default;

    /// The status now, and each later one. Ends with the provider.
    virtual Task<UpdateStream<HostStatus>> statuses() = 0;

    /// Connects, or connects again, and lets ssh ask the user what it needs to know.
    ///
    /// Cancellation: ends the attempt if no other caller waits for it.
    /// Errors: as `connect`.
    virtual Task<void> logIn() = 0;
};

} // namespace tw
