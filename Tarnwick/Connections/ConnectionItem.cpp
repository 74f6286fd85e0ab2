#include "Tarnwick/Connections/ConnectionItem.h"

#include "TWCore/Model/LowerCased.h"

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

bool hasLetters(ConnectionItem const &item, std::string const &letters)
{
    return lowerCased(item.kind == Kind::host ? item.host : item.title.english()).contains(letters);
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
    if (hosts->empty())
        items.push_back(note("No hosts in ~/.ssh/config"));
    for (auto const &host : *hosts)
        items.push_back(itemOf(host, current));
    return items;
}

std::vector<ConnectionItem> lastUsedFirst(std::vector<ConnectionItem> items, std::vector<std::string> const &recent)
{
    if (!hasFilter(items))
        return items;
    auto next = std::ranges::find(items, Kind::host, &ConnectionItem::kind);
    for (auto const &name : recent) {
        auto const isIt = [&name](auto const &item) { return item.kind == Kind::host && item.host == name; };
        auto const found = std::find_if(next, items.end(), isIt);
        if (found != items.end()) {
            std::rotate(next, found, found + 1);
            ++next;
        }
    }
    return items;
}

bool hasFilter(std::vector<ConnectionItem> const &items)
{
    return std::ranges::count(items, Kind::host, &ConnectionItem::kind) > std::ptrdiff_t(mostHostsAtAGlance);
}

std::vector<ConnectionItem> shownItems(std::vector<ConnectionItem> const &items, std::string const &filter)
{
    auto const wanted = lowerCased(filter);
    std::vector<ConnectionItem> shown;
    std::size_t hosts = 0;
    for (auto const &item : items) {
        auto const isChoice = item.kind == Kind::host || item.kind == Kind::local;
        if (!wanted.empty() && item.kind != Kind::header && !(isChoice && hasLetters(item, wanted)))
            continue;
        if (item.kind != Kind::host || hosts++ < mostHostsInMenu)
            shown.push_back(item);
    }
    if (hosts > mostHostsInMenu)
        shown.push_back(note(moreHosts(hosts - mostHostsInMenu)));
    auto const isFound = [](auto const &item) { return item.kind != Kind::header; };
    if (!wanted.empty() && std::ranges::none_of(shown, isFound))
        shown.push_back(note("No host has these letters"));
    return shown;
}

} // namespace tw
