#pragma once

#include <cstddef>
#include <string>

namespace tw::test {

// Hosts with faults, as scripts for TestHost::Options::loginScript. A script runs the commands that it does not spoil
// with /bin/sh.

/// Prints words to both outputs before the command runs, like a .bashrc with a greeting.
std::string loginWithNoise();

/// The PATH has no bash, only the usual tools of scripts.
std::string loginWithoutBash();

/// The login shell belongs to the csh family: POSIX syntax is an error unless it is quoted, and a quoted text ends with
/// its line.
std::string loginWithAnotherShell();

/// Prints bytes of all values, and does not run the command.
std::string loginWithGarbage();

/// Prints that many bytes without a line end, and does not run the command.
std::string loginWithFlood(std::size_t bytes);

/// Ends the connection after that many bytes of the output.
std::string loginThatBreaksOff(std::size_t afterBytes);

/// Root has no more permissions than the modes of files give it, and every other user has those anyway.
std::string loginWithoutPrivileges();

/// Prints nothing until the client gives up.
std::string loginWithoutAnswer();

} // namespace tw::test
