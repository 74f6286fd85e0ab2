#pragma once

#include <optional>
#include <span>

/// The askpass mode of the program: ssh starts it to ask a question. It prints the answer, or nothing, and ends.
///
/// The answer is what is saved in the key store, or comes from the running program, in which a person logs in.
namespace tw::Askpass {

/// The environment variable with the account whose password is wanted: what is saved is to be printed.
inline constexpr auto accountVariable = "TW_ASKPASS_ACCOUNT";

/// The environment variables with the socket and the token of a login, see AskpassDesk: the running program is to be
/// asked. They come before an account. If all of them are unset or empty, the program starts normally.
inline constexpr auto socketVariable = "TW_ASKPASS_SOCKET";
inline constexpr auto tokenVariable = "TW_ASKPASS_TOKEN";

/// Returns nothing in a normal start, else the exit status: 0 if an answer was printed, 1 if nothing was printed. To be
/// called before everything else, on the only thread, with the arguments of `main`.
///
/// Answers only to our own ssh, see AskpassGuard. What is saved answers only a question for the password of the account
/// or for the passphrase of a key, see LoginPrompt. From then on the process leaves no core file, and other processes
/// of the user cannot read its memory.
std::optional<int> run(std::span<char const *const> arguments);

} // namespace tw::Askpass
