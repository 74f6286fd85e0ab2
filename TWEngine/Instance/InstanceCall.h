#pragma once

#include <chrono>
#include <string>
#include <string_view>

/// A call to the program that runs already.
namespace tw::InstanceCall {

/// What the one that is called says when it does what it was called for.
inline constexpr std::string_view agreement = "ok\n";

/// A person who starts a program waits for its window; longer than this, another window is the better answer.
inline constexpr std::chrono::milliseconds patience{500};

enum class Outcome {
    agreed, ///< it does what the message says
    silent, ///< it is there, and does not answer, or does not agree
    nobody, ///< nobody is there, although a socket may be left
};

/// Sends a message and waits for the agreement, on this thread and for no longer than `limit`. Only a process of this
/// user is believed.
Outcome make(std::string const &path, std::string_view message, std::chrono::milliseconds limit = patience);

} // namespace tw::InstanceCall
