#pragma once

#include <optional>
#include <span>

/// The askpass mode of the program: ssh starts it to ask for a password. It prints the saved password, or nothing, and
/// ends.
namespace tw::Askpass {

/// The environment variable with the account whose password is wanted. If it is unset or empty, the program starts
/// normally.
inline constexpr auto accountVariable = "TW_ASKPASS_ACCOUNT";

/// Returns nothing in a normal start, else the exit status: 0 if the password was printed, 1 if nothing was printed. To
/// be called before everything else, on the only thread, with the arguments of `main`.
///
/// Answers only a question for a password, and only to our own ssh: see AskpassPrompt and AskpassGuard. From then on
/// the process leaves no core file, and other processes of the user cannot read its memory.
std::optional<int> run(std::span<char const *const> arguments);

} // namespace tw::Askpass
