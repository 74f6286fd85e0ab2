#include "Tarnwick/Connections/ConnectionItem.h"

#include <algorithm>

namespace tw {

namespace {

using Kind = ConnectionItem::Kind;

ConnectionItem itemOf(std::string const &host, std::string const &current)
{
    // A host of this name exists for ssh, but here it would open this machine: it is seen, and cannot be chosen.
    auto const isReachable = host != localConnection;
    return {.kind = Kind::host,
            .title = host,
            .host = host,
            .isChecked = isReachable && host == current,
            .isEnabled = isReachable};
}

ConnectionItem note(Text text)
{
    return {.kind = Kind::note, .title = std::move(text)};
}

Text moreHosts(std::size_t count)
{
    return {count == 1 ? "%d more host in ~/.ssh/config" : "%d more hosts in ~/.ssh/config", {std::to_string(count)}};
}

} // namespace

std::vector<ConnectionItem> connectionMenuItems(std::optional<Text> header,
                                                std::optional<std::vector<std::string>> const &hosts,
                                                std::string const &current)
{
    std::vector<ConnectionItem> items;
    if (header)
        items.push_back({.kind = Kind::header, .title = *std::move(header)});
    items.push_back(
        {.kind = Kind::local, .title = localTitle, .isChecked = current == localConnection, .isEnabled = true});
    items.push_back({.kind = Kind::separator});
    if (!hosts) {
        items.push_back(note("reading ~/.ssh/config…"));
        return items;
    }
    auto const listed = std::min(hosts->size(), mostHostsInMenu);
    for (std::size_t index = 0; index < listed; ++index)
        items.push_back(itemOf((*hosts)[index], current));
    if (hosts->empty())
        items.push_back(note("No hosts in ~/.ssh/config"));
    else if (listed < hosts->size())
        items.push_back(note(moreHosts(hosts->size() - listed)));
    return items;
}

} // namespace tw
