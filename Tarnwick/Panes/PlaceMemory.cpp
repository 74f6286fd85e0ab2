#include "Tarnwick/Panes/PlaceMemory.h"

namespace tw {

std::string PlaceMemory::keyOf(std::string const &connection, std::string const &path)
{
    return connection + '\0' + path; // no name has this sign
}

void PlaceMemory::remember(std::string const &connection, std::string const &path, Place place)
{
    auto const key = keyOf(connection, path);
    if (auto const known = byKey.find(key); known != byKey.end())
        newest.erase(known->second);
    newest.emplace_front(key, std::move(place));
    byKey.insert_or_assign(key, newest.begin());
    if (newest.size() > mostFolders) {
        byKey.erase(newest.back().first);
        newest.pop_back();
    }
}

PlaceMemory::Place PlaceMemory::recall(std::string const &connection, std::string const &path) const
{
    auto const known = byKey.find(keyOf(connection, path));
    return known != byKey.end() ? known->second->second : Place();
}

} // namespace tw
