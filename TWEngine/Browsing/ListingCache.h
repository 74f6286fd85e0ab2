#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Provider/FileSystemProvider.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tw {

/// The listings that a Browser holds in memory, and what they cost.
///
/// One scan of several levels is one byte buffer that all its snapshots point into: dropping one snapshot frees
/// nothing while a sibling still holds the buffer. So memory is counted by group, a group being what one fetch
/// brought, and eviction goes by group, whole. A group shrinks as later fetches replace its directories one by one,
/// and its bytes are released when the last of them has gone. When groups are evicted is for the ListingBudget to say.
///
/// Threads: none of its own; used by one owner at a time.
class ListingCache {
public:
    /// How listings came to be there.
    struct Fetch {
        std::string root; ///< the path that the scan began at
        int depth = 1;    ///< how deep the scan was asked to go
        /// In the order in which fetches began, not in that of their answers. 0: older than all fetches.
        std::uint64_t number = 0;
        /// No fetch brings more of a folder than this one: its truncated listings are the best there are.
        bool hadAllRoom = false;
    };

    /// What one fetch brought.
    struct Group {
        NameStorage storage;
        Fetch fetch;
        Timestamp fetchedAt;
        bool truncated = false;
        std::unordered_set<std::string> paths; ///< those in the cache that still belong to this group
        Timestamp lastAccess;                  ///< when any of its paths was opened last
        std::uint64_t number = 0;              ///< in order of arrival
    };

    struct CacheEntry {
        DirectorySnapshot snapshot;
        std::shared_ptr<Group> group;
    };

    /// A group as the memory's budget sees it.
    struct Unused {
        Timestamp lastAccess;
        std::uint64_t number = 0; ///< of the group
        std::size_t bytes = 0;
    };

    /// The entry of a normalised path, or null. It stays valid until the next change of the cache.
    CacheEntry const *find(std::string const &path) const;

    /// Notes that a path of the group was opened.
    void touch(Group &group, Timestamp now);

    /// What came of putting in the result of a fetch.
    struct Change {
        Listings taken;                         ///< those that are in the cache now
        std::vector<DirectorySnapshot> changed; ///< the ones of them that differ from what they replaced
    };

    /// Takes in the result of one fetch. A listing whose path was not there before is not a change: nobody can be
    /// looking at it. Two kinds are left out: a part of a folder that another fetch brings whole, and an answer that
    /// differs from the answer to a later question.
    Change put(Listings listings, Fetch fetch);

    /// Takes in one listing that was not fetched now, as a group of its own.
    void adopt(DirectorySnapshot snapshot, std::string const &path);

    /// Drops the group that holds `path`, with all that was scanned along with it.
    void dropGroupOf(std::string const &path);

    /// Drops every group that holds a path below `path`. Looks at all paths: for changes that a person makes.
    void dropGroupsBelow(std::string const &path);

    void clear();

    /// The groups that were not opened for the longest, in that order, the older arrival first among equals: as many as
    /// hold `bytes` together without the newest, which may have to stay.
    std::vector<Unused> longestUnused(std::size_t bytes) const;

    /// Drops those of the groups that were not opened since.
    void evict(std::vector<Unused> const &unused);

    /// The number of the group that was put in last.
    std::uint64_t newestGroup() const noexcept { return lastNumber; }

    /// The sum of the storage sizes of all groups.
    std::size_t cachedBytes() const noexcept { return bytes; }

    std::size_t pathCount() const noexcept { return entries.size(); }

    std::map<std::uint64_t, std::shared_ptr<Group>> const &liveGroups() const noexcept { return groups; }

private:
    bool isWorthTaking(std::string const &path, DirectorySnapshot const &snapshot, Fetch const &fetch) const;
    std::shared_ptr<Group> makeGroup(DirectorySnapshot const &first, Fetch fetch);
    void place(DirectorySnapshot snapshot, std::string const &path, std::shared_ptr<Group> const &group);
    void admit(std::shared_ptr<Group> const &group);
    void drop(std::shared_ptr<Group> const &group);

    std::unordered_map<std::string, CacheEntry> entries;
    std::map<std::uint64_t, std::shared_ptr<Group>> groups;
    /// The groups by last access, the older arrival first among equals.
    std::set<std::pair<Timestamp, std::uint64_t>> byAccess;
    std::size_t bytes = 0;
    std::uint64_t lastNumber = 0;
};

/// Whether two listings show the same: the same entries in the same order, wherever their names are stored.
bool showTheSame(DirectorySnapshot const &a, DirectorySnapshot const &b);

} // namespace tw
