#pragma once

#include "TWEngine/Passwords/LoginQuestion.h"

#include <cstddef>
#include <string_view>

/// Reads the prompts with which ssh starts its askpass program.
///
/// A host can choose the words, and ssh then puts "(user@host) " before them: only ssh itself asks about keys.
namespace tw::LoginPrompt {

/// Of the words that are shown, in bytes.
inline constexpr std::size_t longest = 2048;

/// The question of `prompt`, without its host and with `attempt` at 1. `hint` is what ssh says of it in
/// SSH_ASKPASS_PROMPT: "confirm", "none" or nothing.
LoginQuestion read(std::string_view prompt, std::string_view hint);

} // namespace tw::LoginPrompt
