#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

/// Commands of a POSIX host that another session can end: a resident shell waits for its command, and hears nothing
/// meanwhile.
namespace tw::EndableCommand {

/// Runs `script`, in which each call of one of the `programs` can be ended; only one of them runs at a time. The shell
/// ends with the script: it is one that was made for it. The program's process leaves its number in a file, which goes
/// a moment after the last answer; where no file can be written, the program cannot be ended and runs all the same.
/// `token` names the file: letters and digits that nobody can guess, since the folder is a shared one.
std::string text(std::string_view token, std::initializer_list<std::string_view> programs, std::string_view script);

/// Ends that command, from another session. Calls that have not begun yet end when they begin. Status 0: the command is
/// under way, and what this leaves goes with it. `cannotBeEnded`: only a call that is under way was ended, if its
/// number is known. Otherwise it has not begun or is over, and `forget` is needed.
std::string end(std::string_view token);

/// No file can be written there, so calls that have not begun yet run all the same, and the command goes on or is over.
inline constexpr std::int32_t cannotBeEnded = 3;

/// A condition for `script`: `position` will have an answer, and `end` will work.
std::string isWatched();

/// Prints how far the program has read its standard input, from another session; nothing where the kernel does not say
/// it.
std::string position(std::string_view token);

/// Removes what `end` leaves for a command that was over before. The command must be over.
std::string forget(std::string_view token);

} // namespace tw::EndableCommand
