#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// A shell that a start file of the host runs in place of bash, such as `exec zsh` in .bashrc.
///
/// Such a shell reads the resident script too, and mostly greets as bash does, but fails at the requests. What is sent
/// here is understood by every shell that acts on each line as it reads it: those of the families of sh and of csh.
namespace tw::OtherShell {

/// The statuses of handshakes, beside the 0 of the resident script and those that a failing script could have.
inline constexpr std::int32_t isThere = 909;
inline constexpr std::int32_t isGone = 910;

/// The detail of a failure to replace it.
inline constexpr auto failure = "a start file replaces the shell";

/// The lines to be written before the resident script. Bash says nothing to them; another shell answers with a
/// handshake of the status `isThere`.
std::string question(std::string_view nonce);

/// The line that makes the shell become a bash without start files, which answers with a handshake of the status
/// `isGone`. Nothing may be written before that answer: the shell may read ahead.
std::string replacement(std::string_view nonce);

} // namespace tw::OtherShell
