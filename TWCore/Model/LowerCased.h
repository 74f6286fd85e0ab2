#pragma once

#include <string>
#include <string_view>

namespace tw {

/// `text` with its ASCII letters in lower case, whatever the locale. For keywords of programs and files, not for text
/// of people.
std::string lowerCased(std::string_view text);

} // namespace tw
