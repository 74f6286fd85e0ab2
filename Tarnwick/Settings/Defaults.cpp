#include "Tarnwick/Settings/Defaults.h"

namespace tw {

std::optional<std::string> MemoryDefaults::text(std::string const &key) const
{
    auto const found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

void MemoryDefaults::setText(std::string const &key, std::string const &value)
{
    values[key] = value;
}

} // namespace tw
