#pragma once

#include <cstdint>
#include <string>

namespace tw::test {

/// What a client has to know of a host on 127.0.0.1.
struct HostAddress {
    std::uint16_t port = 0;
    std::string hostKey;      ///< the public half, its type and the key itself
    std::string identityFile; ///< the private key that the host lets in; its public half has ".pub" behind its name

    /// The same host, reached through another port, such as that of a DelayProxy.
    HostAddress through(std::uint16_t otherPort) const { return {otherPort, hostKey, identityFile}; }
};

} // namespace tw::test
