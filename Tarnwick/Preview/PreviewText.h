#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tw {

/// The beginning of a text file, made fit to be shown.
struct PreviewText {
    /// A longer line is cut: laying out a line takes longer than its length says.
    static constexpr std::size_t mostLineBytes = 2000;

    std::string text;     ///< UTF-8
    std::string encoding; ///< what it was, as a person calls it

    /// By the share of control characters at the beginning.
    static bool looksBinary(std::string_view bytes);

    /// `bytes` may end in the middle of a character. Whatever they are, there is a text: the last guess fits anything.
    static PreviewText of(std::string_view bytes);
};

} // namespace tw
