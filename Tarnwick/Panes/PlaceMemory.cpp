#include "Tarnwick/Panes/PlaceMemory.h"

namespace tw {

void PlaceMemory::remember(std::string const &path, Place place)
{
    if (auto const known = byPath.find(path); known != byPath.end())
        newest.erase(known->second);
    newest.emplace_front(path, std::move(place));
    byPath.insert_or_assign(path, newest.begin());
    if (newest.size() > mostFolders) {
        byPath.erase(newest.back().first);
        newest.pop_back();
    }
}

PlaceMemory::Place PlaceMemory::recall(std::string const &path) const
{
    auto const known = byPath.find(path);
    return known != byPath.end() ? known->second->second : Place();
}

void PlaceMemory::clear()
{
    byPath.clear();
    newest.clear();
}

} // namespace tw
