#include "TWCore/Model/Trimmed.h"

namespace tw {

std::string_view trimmed(std::string_view text) noexcept
{
    constexpr std::string_view whiteSpace = " \t\n\v\f\r";
    auto const first = text.find_first_not_of(whiteSpace);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(whiteSpace) - first + 1);
}

} // namespace tw
