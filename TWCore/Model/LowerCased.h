#pragma once

#include <string>
#include <string_view>

namespace tw {

/// `text` with the letters of ASCII in lower case and everything else as it is, whatever the locale: for the words of
/// programs and of their files, not for people's.
std::string lowerCased(std::string_view text);

} // namespace tw
