#pragma once

#include <string_view>

namespace tw {

/// `text` without ASCII white space and line ends at its beginning and end.
std::string_view trimmed(std::string_view text) noexcept;

} // namespace tw
