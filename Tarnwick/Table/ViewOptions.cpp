#include "Tarnwick/Table/ViewOptions.h"

namespace tw {

std::string_view sortKeyText(SortKey key)
{
    switch (key) {
    case SortKey::name:
        return "name";
    case SortKey::ext:
        return "ext";
    case SortKey::size:
        return "size";
    case SortKey::date:
        return "date";
    }
    return {};
}

std::optional<SortKey> sortKeyFromText(std::string_view text)
{
    for (auto const key : {SortKey::name, SortKey::ext, SortKey::size, SortKey::date}) {
        if (text == sortKeyText(key))
            return key;
    }
    return std::nullopt;
}

ViewOptions ViewOptions::sortedBy(SortKey key) const
{
    // The largest and the newest are what one looks for by size and by date.
    auto const usual = key == SortKey::name || key == SortKey::ext;
    return {.sortKey = key, .ascending = key == sortKey ? !ascending : usual, .showHidden = showHidden};
}

} // namespace tw
