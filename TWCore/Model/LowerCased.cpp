#include "TWCore/Model/LowerCased.h"

namespace tw {

std::string lowerCased(std::string_view text)
{
    std::string lower(text);
    for (auto &character : lower) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return lower;
}

} // namespace tw
