#pragma once

#include <string_view>

namespace tw {

/// `text` without the white space and line ends (of ASCII) around it.
std::string_view trimmed(std::string_view text) noexcept;

} // namespace tw
