#include "Tarnwick/Operations/CountPhrase.h"

namespace tw {

std::string countPhrase(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " item" : " items");
}

std::string grouped(std::int64_t number)
{
    auto digits = std::to_string(number);
    auto const first = number < 0 ? 1U : 0U;
    for (auto place = digits.size(); place > first + 3;) {
        place -= 3;
        digits.insert(place, ",");
    }
    return digits;
}

} // namespace tw
