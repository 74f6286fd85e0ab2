#pragma once

#include <string>
#include <string_view>

/// Commands of a POSIX host that another session can end: a resident shell waits for its command, and hears nothing
/// meanwhile.
namespace tw::EndableCommand {

/// Runs `script`, in which each call of `program` can be ended. The session goes on. The program's process leaves its
/// number in a file; where no file can be written, the program cannot be ended and runs all the same. `token` names
/// the file: letters and digits that nobody can guess, since the folder is a shared one.
std::string text(std::string_view token, std::string_view program, std::string_view script);

/// Ends that command, from another session. Calls that have not begun yet end when they begin.
std::string end(std::string_view token);

} // namespace tw::EndableCommand
