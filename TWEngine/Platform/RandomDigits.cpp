#include "TWEngine/Platform/RandomDigits.h"

#include "TWCore/Check.h"

#include <sys/random.h>

namespace tw {

std::string randomDigits(std::size_t bytes)
{
    std::string raw(bytes, '\0');
    check(::getrandom(raw.data(), raw.size(), 0) == std::ssize(raw), "the system has no random numbers");
    std::string digits;
    for (auto const byte : raw) {
        constexpr std::string_view all = "0123456789abcdef";
        auto const value = static_cast<unsigned char>(byte);
        digits += {all[value >> 4U], all[value & 15U]};
    }
    return digits;
}

} // namespace tw
