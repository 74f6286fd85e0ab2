#pragma once

#include <cstddef>
#include <string>

namespace tw::test {

// Hosts that are not as one would like them, as scripts for TestHost::Options::loginScript. What a script does not
// spoil, it runs as sent, by /bin/sh.

/// Words on both outputs before the command runs, as of a .bashrc that greets.
std::string loginWithNoise();

/// There is no bash in the PATH, only what scripts commonly call.
std::string loginWithoutBash();

/// The user's shell is of the family of csh: what a POSIX shell reads is a syntax error unless it stands in quotes, and
/// no quoted text goes over the end of a line.
std::string loginWithAnotherShell();

/// Bytes of all values, and nothing that was asked for.
std::string loginWithGarbage();

/// So many bytes without the end of a line, and nothing that was asked for.
std::string loginWithFlood(std::size_t bytes);

/// The command runs until it has said so many bytes, and the connection ends.
std::string loginThatBreaksOff(std::size_t afterBytes);

/// Not a word until the client gives up.
std::string loginWithoutAnswer();

} // namespace tw::test
