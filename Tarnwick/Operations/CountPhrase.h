#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tw {

/// "1 item", "3 items".
std::string countPhrase(std::size_t count);

/// "10,000": with a comma at each thousand.
std::string grouped(std::int64_t number);

} // namespace tw
