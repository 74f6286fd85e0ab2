#pragma once

#include <string>
#include <vector>

namespace tw {

/// How far the client of a session has got on its way to the host's shell. Later ones compare greater.
enum class ClientStage {
    reaching,       ///< the connection and the key exchange
    loggingIn,      ///< the key exchange is done
    waitingForShell ///< logged in, by itself or over a shared connection
};

/// What is known of a client's way to a host when the way has ended.
struct ClientReport {
    ClientStage stage = ClientStage::reaching;
    /// The client's own words and the host's standard error, whole lines, at most 8 KiB from the end; no log lines.
    std::string words = {};
    /// What the host printed in place of a greeting, at most 2 KiB from the beginning; any bytes.
    std::string printed = {};
    std::vector<std::string> offeredKeys = {};    ///< the paths or comments of keys that the host was offered
    std::string acceptedKey = {};                 ///< of a key that the host takes and that did not come to be used
    std::vector<std::string> offeredMethods = {}; ///< the ways to log in that the host named last, such as "publickey"
    std::string triedMethod = {};                 ///< the last of them that the client tried
    /// Of the key that is stored for the host, if the host showed another one: such as "SHA256:…".
    std::string storedFingerprint = {};

    friend bool operator==(ClientReport const &, ClientReport const &) = default;
};

} // namespace tw
