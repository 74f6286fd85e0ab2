#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// What the askpass program sends to the running program: a question of ssh.
///
/// The answer is one line, or the end of the connection where there is none.
struct AskpassRequest {
    std::string token;
    std::string hint;   ///< SSH_ASKPASS_PROMPT
    std::string prompt; ///< as ssh gave it

    /// Of a request on the line. The system bounds an argument of a program, but higher.
    static constexpr std::size_t longest = std::size_t{8} * 1024;

    /// On the line each field ends with a NUL, which none of them can contain. A prompt that is too long is cut off.
    std::string encoded() const;

    /// Nothing as long as the request is not whole.
    static std::optional<AskpassRequest> decoded(std::string_view bytes);

    friend bool operator==(AskpassRequest const &, AskpassRequest const &) = default;
};

} // namespace tw
