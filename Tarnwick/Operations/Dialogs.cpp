#include "Tarnwick/Operations/Dialogs.h"

#include "TWCore/Model/DisplayText.h"

#include <algorithm>

namespace tw {

std::string Dialogs::describe(std::span<std::string const> names, std::size_t limit)
{
    if (names.size() == 1)
        return onOneLine(names.front());
    auto const shown = std::min(names.size(), limit);
    std::string text;
    for (auto const &name : names.first(shown))
        text += (text.empty() ? "" : "\n") + onOneLine(name);
    if (names.size() > shown)
        text += (text.empty() ? "… and " : "\n… and ") + std::to_string(names.size() - shown) + " more";
    return text;
}

} // namespace tw
