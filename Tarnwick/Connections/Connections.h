#pragma once

#include "TWEngine/Browsing/Browser.h"

#include <memory>
#include <string>
#include <vector>

namespace tw {

/// Where a pane gets the Browser of a connection: one for each, for all who ask.
///
/// Threads: main context only.
class Connections {
public:
    virtual ~Connections() = default;

    /// The files of this machine.
    virtual std::shared_ptr<Browser> local() = 0;

    /// The files of a host, which is connected if need be. Throws what connecting throws.
    virtual Task<std::shared_ptr<Browser>> ssh(std::string host) = 0;

    /// The same Browser without waiting for the host, which begins to be connected. What it remembers can be opened at
    /// once; what it has to ask the host for waits for the connection, and fails with it.
    virtual Task<std::shared_ptr<Browser>> reach(std::string host) = 0;

    /// The names of the hosts that the user has saved, in their order; none if they cannot be read. They are read anew,
    /// but those who ask while they are being read share that reading: a disk that hangs is to take one worker, not
    /// all.
    virtual Task<std::vector<std::string>> hosts() = 0;
};

} // namespace tw
