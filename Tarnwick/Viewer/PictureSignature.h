#pragma once

#include <string_view>

namespace tw {

/// Whether a file begins as pictures do. Its decoder may know better.
bool isProbablyImage(std::string_view beginning);

} // namespace tw
