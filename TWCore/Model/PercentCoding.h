#pragma once

#include <string>
#include <string_view>

/// Bytes in an address such as "file:///a%20b".
namespace tw::PercentCoding {

/// Every byte that is no letter, no digit and none of "-._~" or of `kept` becomes "%" and two digits.
std::string encoded(std::string_view bytes, std::string_view kept = "/");

/// A "%" without two digits stays, as people write it who do not know that it should be "%25".
std::string decoded(std::string_view text);

} // namespace tw::PercentCoding
