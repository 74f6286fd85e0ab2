#pragma once

#include "TWEngine/Browsing/Browser.h"

#include <memory>
#include <string>
#include <vector>

namespace tw {

/// A connection as it is, without one that begins.
struct KnownConnection {
    std::shared_ptr<Browser> browser;
    bool isUp = false; ///< otherwise a question would begin a connection
};

/// Where a pane gets the Browser of a connection: one for each, for all who ask.
///
/// To hold the Browser of a host is to use the host. A host that has not been used for a while may lose its ssh
/// clients; the Browser keeps its listings, and the next question connects again.
///
/// Threads: main context only.
class Connections {
public:
    virtual ~Connections() = default;

    /// The files of this machine.
    virtual std::shared_ptr<Browser> local() = 0;

    /// The files of a host, once it is connected. Throws what connecting throws.
    virtual Task<std::shared_ptr<Browser>> ssh(std::string host) = 0;

    /// The same with questions to the user: ssh may ask for passwords, codes and host keys. Connects anew if the host
    /// is not up.
    virtual Task<std::shared_ptr<Browser>> logIn(std::string host) { return ssh(std::move(host)); }

    /// The same Browser without waiting for the host, whose connection begins. Remembered listings can be opened at
    /// once; a question to the host waits for the connection and fails with it.
    virtual Task<std::shared_ptr<Browser>> reach(std::string host) = 0;

    /// The Browser of a host as the host is now. No connection begins.
    virtual Task<KnownConnection> known(std::string host) = 0;

    /// The names of the hosts that the user has saved, in their order; none if they cannot be read. Each call reads
    /// them anew, but calls during a reading share it: a disk that hangs may take one worker, not all.
    virtual Task<std::vector<std::string>> hosts() = 0;
};

} // namespace tw
