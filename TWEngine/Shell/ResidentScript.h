#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The program that runs on a POSIX host for the life of a session: written to its shell once, installed nowhere.
///
/// It is bash, and the shell itself is the loop: the text defines functions, prints one handshake, and every later line
/// is one more command to the same shell. What is sent and what comes back is told in docs/protocol.md.
namespace tw::ResidentScript {

/// The script for one session. `nonce` is the session's, in hexadecimal; listings are cut at `maxResponseBytes`.
std::string posix(std::string_view nonce, std::size_t maxResponseBytes);

} // namespace tw::ResidentScript
