#pragma once

#include "TWEngine/Browsing/ListingCache.h"
#include "TWEngine/Runtime/Strand.h"

#include <map>
#include <memory>

namespace tw {

/// The memory for listings, one amount for all Browsers: what was unused for the longest goes first, whichever Browser
/// holds it.
///
/// Each Browser reports what its cache holds when it has grown. Only when they hold too much together are all caches
/// asked what they have not used for long, so that opening a folder from memory costs nothing here. Between a growth
/// and the end of that question, the amount is exceeded by what was just fetched.
///
/// Threads: serialised on its own strand; `report` may be called from anywhere. A cache is touched on the strand of its
/// owner only.
/// Lifetime: shared; it does not keep caches alive.
class ListingBudget : public std::enable_shared_from_this<ListingBudget> {
public:
    /// Bytes of name storage, the dominating cost: some 8 million files. A host with a deep tree on show fills a tenth.
    static constexpr std::size_t usualBytes = 256U << 20U;

    explicit ListingBudget(Strand ground, std::size_t bytes = usualBytes) : strand(std::move(ground)), most(bytes) {}

    /// Notes what the cache of the strand `owner` holds after it has grown. The group that was put in last is not
    /// evicted, even if it alone is too much: somebody is about to look at it.
    void report(Strand owner, std::shared_ptr<ListingCache> const &cache);

private:
    using CacheRef = std::weak_ptr<ListingCache>;

    struct Member {
        Strand owner;
        std::size_t bytes; ///< when it was asked last
    };

    using Members = std::map<CacheRef, Member, std::owner_less<>>;

    /// What a cache answers.
    struct Standing {
        std::size_t bytes = 0;
        std::vector<ListingCache::Unused> unused; ///< the groups that may go, the longest unused first
    };

    struct Candidate {
        CacheRef cache;
        ListingCache::Unused group;
    };

    using Going = std::map<CacheRef, std::vector<ListingCache::Unused>, std::owner_less<>>;

    static Task<void> noteGrowth(std::shared_ptr<ListingBudget> self, Strand owner, CacheRef cache, std::size_t bytes,
                                 std::uint64_t newest);
    static Task<void> makeRoom(std::shared_ptr<ListingBudget> self);
    static Task<Standing> ask(CacheRef cache, std::size_t bytes);
    /// Answers how many bytes are left.
    static Task<std::size_t> evict(CacheRef cache, std::vector<ListingCache::Unused> groups);
    /// The groups that go so that `bytes` become free, if that much has to.
    Going choose(std::vector<Candidate> candidates, std::size_t bytes) const;
    void note(CacheRef const &cache, std::size_t bytes);
    std::size_t held() const;

    // Constant after construction.
    Strand const strand;
    std::size_t const most;

    // On the strand.
    Members members;
    CacheRef grownLast;            ///< the cache that has grown last
    std::uint64_t newestGroup = 0; ///< the group by which it has
    bool isMakingRoom = false;
    bool hasGrownMeanwhile = false;
};

} // namespace tw
