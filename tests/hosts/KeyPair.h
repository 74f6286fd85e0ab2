#pragma once

#include <string>

namespace tw {
class IoThread;
} // namespace tw

namespace tw::test {

/// A throw-away key of a host or of a user.
struct KeyPair {
    std::string privateFile; ///< a path
    std::string publicKey;   ///< type and key, as in known_hosts and authorized_keys

    /// Makes a new key; `path` is the file of the private key. Throws std::runtime_error.
    static KeyPair generate(IoThread &io, std::string path);
};

} // namespace tw::test
