#pragma once

#include <cstdint>
#include <string>

namespace tw::test {

/// How a client reaches a host on 127.0.0.1.
struct HostAddress {
    std::uint16_t port = 0;
    std::string hostKey; ///< the public key: type and key
    std::string
        identityFile; ///< the private key that the host accepts; the public key is beside it, with ".pub" appended

    /// The same host behind another port, such as that of a DelayProxy.
    HostAddress through(std::uint16_t otherPort) const { return {otherPort, hostKey, identityFile}; }
};

} // namespace tw::test
