#pragma once

#include <optional>
#include <span>

/// The program as ssh starts it to ask for a password: it prints the saved one, or nothing, and ends.
namespace tw::Askpass {

/// The account whose password is asked for. Without it, or with an empty one, the program is started as usual.
inline constexpr auto accountVariable = "TW_ASKPASS_ACCOUNT";

/// The exit status of this process, if it was started for that: 0 if the password was printed, else 1, without a word.
/// Nothing: it was not. Called before everything else, on the only thread, with the arguments of `main`.
///
/// Only a question for a password is answered, and only to our own ssh: see AskpassPrompt and AskpassGuard. From here
/// on the process leaves no core file and cannot be looked into by other processes of the user.
std::optional<int> run(std::span<char const *const> arguments);

} // namespace tw::Askpass
