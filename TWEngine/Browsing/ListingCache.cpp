#include "TWEngine/Browsing/ListingCache.h"

namespace tw {

namespace {

std::size_t storageBytes(ListingCache::Group const &group)
{
    return group.storage ? group.storage->size() : 0;
}

} // namespace

bool showTheSame(DirectorySnapshot const &a, DirectorySnapshot const &b)
{
    auto const sameRow = [&](Entry const &left, Entry const &right) {
        return left.size == right.size && left.mtime == right.mtime && left.mode == right.mode &&
               left.kind == right.kind && a.nameBytes(left) == b.nameBytes(right);
    };
    return std::ranges::equal(a.entries(), b.entries(), sameRow);
}

ListingCache::CacheEntry const *ListingCache::find(std::string const &path) const
{
    auto const found = entries.find(path);
    return found == entries.end() ? nullptr : &found->second;
}

void ListingCache::touch(Group &group, Timestamp now)
{
    // The node is reused, so that a warm open allocates nothing.
    auto node = byAccess.extract({group.lastAccess, group.number});
    group.lastAccess = now;
    if (node.empty())
        return;
    node.value().first = now;
    byAccess.insert(std::move(node));
}

ListingCache::Change ListingCache::put(Listings listings, Fetch fetch)
{
    std::erase_if(listings, [&](auto const &each) { return !isWorthTaking(each.first, each.second, fetch); });
    if (listings.empty())
        return {};

    auto const asked = listings.find(fetch.root);
    auto const &first = asked != listings.end() ? asked->second : listings.begin()->second;
    auto const group = makeGroup(first, std::move(fetch));
    std::vector<DirectorySnapshot> changed;
    for (auto const &[path, snapshot] : listings) {
        auto const *const old = find(path);
        if (old && !showTheSame(old->snapshot, snapshot))
            changed.push_back(snapshot);
        place(snapshot, path, group);
    }
    admit(group);
    return {.taken = std::move(listings), .changed = std::move(changed)};
}

bool ListingCache::isWorthTaking(std::string const &path, DirectorySnapshot const &snapshot, Fetch const &fetch) const
{
    // A part of a folder would push out the whole listing that is there, and where there is none, the next open
    // fetches it whole.
    if (snapshot.truncated() && !fetch.hadAllRoom)
        return false;
    auto const *const old = find(path);
    return !old || old->group->fetch.number <= fetch.number || showTheSame(old->snapshot, snapshot);
}

void ListingCache::adopt(DirectorySnapshot snapshot, std::string const &path)
{
    auto const group = makeGroup(snapshot, {.root = path});
    place(std::move(snapshot), path, group);
    admit(group);
}

void ListingCache::dropGroupOf(std::string const &path)
{
    auto const *const entry = find(path);
    if (!entry)
        return;
    auto const group = entry->group;
    drop(group);
}

void ListingCache::dropGroupsBelow(std::string const &path)
{
    auto const prefix = path == "/" ? path : path + '/';
    std::vector<std::shared_ptr<Group>> below;
    for (auto const &[each, entry] : entries) {
        if (each.starts_with(prefix))
            below.push_back(entry.group);
    }
    for (auto const &group : below)
        drop(group);
}

void ListingCache::clear()
{
    entries.clear();
    groups.clear();
    byAccess.clear();
    bytes = 0;
}

std::shared_ptr<ListingCache::Group> ListingCache::makeGroup(DirectorySnapshot const &first, Fetch fetch)
{
    auto group = std::make_shared<Group>();
    group->storage = first.storage();
    group->fetch = std::move(fetch);
    group->fetchedAt = first.fetchedAt();
    group->truncated = first.truncated();
    group->lastAccess = first.fetchedAt();
    group->number = ++lastNumber;
    return group;
}

void ListingCache::place(DirectorySnapshot snapshot, std::string const &path, std::shared_ptr<Group> const &group)
{
    auto &entry = entries[path];
    if (auto const old = std::exchange(entry.group, group)) {
        old->paths.erase(path);
        if (old->paths.empty())
            drop(old);
    }
    entry.snapshot = std::move(snapshot);
    group->paths.insert(path);
}

void ListingCache::admit(std::shared_ptr<Group> const &group)
{
    groups.emplace(group->number, group);
    byAccess.emplace(group->lastAccess, group->number);
    bytes += storageBytes(*group);
}

std::vector<ListingCache::Unused> ListingCache::longestUnused(std::size_t wanted) const
{
    std::vector<Unused> unused;
    std::size_t sum = 0;
    for (auto const &[lastAccess, number] : byAccess) {
        if (sum >= wanted)
            break;
        auto const size = storageBytes(*groups.at(number));
        unused.push_back({.lastAccess = lastAccess, .number = number, .bytes = size});
        // The newest may have to stay, and then makes no room.
        sum += number == lastNumber ? 0 : size;
    }
    return unused;
}

void ListingCache::evict(std::vector<Unused> const &unused)
{
    for (auto const &each : unused) {
        auto const group = groups.find(each.number);
        if (group != groups.end() && group->second->lastAccess == each.lastAccess)
            drop(group->second);
    }
}

void ListingCache::drop(std::shared_ptr<Group> const &group)
{
    // A copy: the reference may be one into `groups`.
    auto const keep = group;
    for (auto const &path : keep->paths)
        entries.erase(path);
    keep->paths.clear();
    if (groups.erase(keep->number) == 0)
        return;
    byAccess.erase({keep->lastAccess, keep->number});
    bytes -= storageBytes(*keep);
}

} // namespace tw
