#include "Tarnwick/Operations/StagingName.h"

#include <random>

namespace tw {

std::string stagingName()
{
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string name(stagingPrefix);
    std::random_device source;
    auto bits = source();
    for (int count = 0; count < 8; ++count, bits >>= 4U)
        name += digits[bits & 0xfU];
    return name;
}

} // namespace tw
