#pragma once

#include "TWCore/Archives/ArchiveTools.h"

#include <string>
#include <string_view>

/// What a POSIX host's shell needs around the calls of a `tar` that is bsdtar.
namespace tw::BsdTarThere {

/// Whether `program` of the host is bsdtar.
bool isIt(ArchiveTools const &tools, std::string_view program);

/// Statements before the calls, for a subshell: a locale whose names are UTF-8. In the C locale of a session bsdtar
/// leaves out members of a zip, and fails at those of a tar, if their names are not ASCII.
std::string_view locale();

/// A call that asks for a password once. By itself bsdtar asks ten thousand times, which takes up to a minute, if the
/// input is at its end or has a wrong password.
std::string withoutPassword(std::string_view call);

/// The same with a password at the input, and with the words of the tool on its output; for bash. `end` ends the tool.
std::string withPassword(std::string_view call, std::string_view end);

} // namespace tw::BsdTarThere
