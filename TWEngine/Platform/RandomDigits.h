#pragma once

#include <cstddef>
#include <string>

namespace tw {

/// `bytes` random bytes of the system as hexadecimal digits.
std::string randomDigits(std::size_t bytes);

} // namespace tw
