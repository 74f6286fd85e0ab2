#include "TWCore/Provider/TransferRefusal.h"

#include <algorithm>

namespace tw {

namespace {

using Occupant = FolderFacts::Occupant;

std::string pathIn(std::string const &folder, std::string const &name)
{
    return (folder.ends_with('/') ? folder : folder + '/') + name;
}

/// Whether the target folder is `entry` of the source, or below it.
bool leadsInto(FolderFacts const &target, FolderFacts const &source, Occupant const &entry)
{
    if (entry.kind != EntryKind::directory)
        return false;
    if (entry.identity && !target.way.empty())
        return std::ranges::find(target.way, *entry.identity) != target.way.end();
    // A place without identities has real paths at least.
    auto const path = pathIn(source.realPath, entry.name);
    return target.realPath == path || target.realPath.starts_with(path + '/');
}

bool isSameFolder(FolderFacts const &one, FolderFacts const &other)
{
    if (!one.way.empty() && !other.way.empty())
        return one.way.front() == other.way.front();
    return one.realPath == other.realPath;
}

/// Whether writing `entry` would write over the entry itself.
bool isThere(FolderFacts const &target, Occupant const &entry)
{
    return entry.identity && std::ranges::find(target.taken, entry.identity, &Occupant::identity) != target.taken.end();
}

} // namespace

std::optional<TransferRefusal> TransferRefusal::of(FolderFacts const &source, FolderFacts const &target, Places places,
                                                   Naming naming)
{
    if (target.state == FolderFacts::State::missing)
        return TransferRefusal{Reason::targetIsMissing};
    if (target.state == FolderFacts::State::notAFolder)
        return TransferRefusal{Reason::targetIsNoFolder};
    if (places == Places::different)
        return std::nullopt;
    auto const sameFolder = isSameFolder(source, target);
    for (auto const &entry : source.taken) {
        if (leadsInto(target, source, entry))
            return TransferRefusal{Reason::intoItself, entry.name};
        if (naming == Naming::kept && (sameFolder || isThere(target, entry)))
            return TransferRefusal{Reason::ontoItself, entry.name};
    }
    return std::nullopt;
}

} // namespace tw
