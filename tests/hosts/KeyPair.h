#pragma once

#include <string>

namespace tw {
class IoThread;
} // namespace tw

namespace tw::test {

/// A throw-away key of a host or of a user.
struct KeyPair {
    std::string privateFile; ///< a path
    std::string publicKey;   ///< its type and the key itself, as known hosts and authorised keys are listed

    /// Makes a new one; `path` is where the private half comes to lie. Throws std::runtime_error.
    static KeyPair generate(IoThread &io, std::string path);
};

} // namespace tw::test
