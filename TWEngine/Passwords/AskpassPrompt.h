#pragma once

#include <string_view>

/// The questions that ssh asks its askpass program.
namespace tw::AskpassPrompt {

/// True if the question is for the password of a login: not whether a host may be trusted, and not for the passphrase
/// of a key, a one-time code or a new password.
///
/// With the keyboard-interactive method the host chooses the words. A question in another language than English is not
/// recognised; ssh then tries its own method, which always asks in English.
bool asksForPassword(std::string_view prompt);

} // namespace tw::AskpassPrompt
