#pragma once

#include <string_view>

/// What ssh asks its askpass program.
namespace tw::AskpassPrompt {

/// Whether it is the password of a login, and not whether a host may be trusted, what opens a key, a code that is good
/// for once, or a new password.
///
/// A host words the question itself if it asks by the keyboard-interactive method; one in another language than English
/// is not known as one for a password. ssh then goes on to its own method, whose words are always these.
bool asksForPassword(std::string_view prompt);

} // namespace tw::AskpassPrompt
