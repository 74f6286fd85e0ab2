#include "TWEngine/Browsing/ListingBudget.h"

#include <algorithm>
#include <utility>

namespace tw {

void ListingBudget::report(Strand owner, std::shared_ptr<ListingCache> const &cache)
{
    spawn({strand.executor(), {}},
          noteGrowth(shared_from_this(), std::move(owner), cache, cache->cachedBytes(), cache->newestGroup()));
}

Task<void> ListingBudget::noteGrowth(std::shared_ptr<ListingBudget> self, Strand owner, CacheRef cache,
                                     std::size_t bytes, std::uint64_t newest)
{
    std::erase_if(self->members, [](auto const &each) { return each.first.expired(); });
    self->members.insert_or_assign(cache, Member{.owner = std::move(owner), .bytes = bytes});
    self->grownLast = std::move(cache);
    self->newestGroup = newest;
    if (self->held() <= self->most)
        co_return;
    self->hasGrownMeanwhile = true;
    if (std::exchange(self->isMakingRoom, true))
        co_return;
    while (std::exchange(self->hasGrownMeanwhile, false)) {
        if (self->held() > self->most)
            co_await makeRoom(self);
    }
    self->isMakingRoom = false;
}

Task<void> ListingBudget::makeRoom(std::shared_ptr<ListingBudget> self)
{
    // What has grown since is for the next turn: each cache is asked for as much as is too much now.
    auto const over = self->held() - self->most;
    auto const asked = self->members;
    std::vector<Candidate> candidates;
    for (auto const &[cache, member] : asked) {
        auto const standing = co_await onStrand(member.owner, ask(cache, over));
        self->note(cache, standing.bytes);
        for (auto const &group : standing.unused)
            candidates.push_back({.cache = cache, .group = group});
    }
    auto const going = self->choose(std::move(candidates), over);
    for (auto const &[cache, groups] : going) {
        auto const left = co_await onStrand(asked.at(cache).owner, evict(cache, groups));
        self->note(cache, left);
    }
}

ListingBudget::Going ListingBudget::choose(std::vector<Candidate> candidates, std::size_t bytes) const
{
    std::ranges::sort(candidates, {},
                      [](Candidate const &each) { return std::pair(each.group.lastAccess, each.group.number); });
    Going going;
    // Fewer if a cache had shrunk without a report.
    auto const held = this->held();
    auto wanted = std::min(bytes, held - std::min(held, most));
    for (auto const &[cache, group] : candidates) {
        if (wanted == 0)
            break;
        auto const isGrownLast = !cache.owner_before(grownLast) && !grownLast.owner_before(cache);
        if (isGrownLast && group.number == newestGroup)
            continue;
        going[cache].push_back(group);
        wanted -= std::min(wanted, group.bytes);
    }
    return going;
}

Task<ListingBudget::Standing> ListingBudget::ask(CacheRef cache, std::size_t bytes)
{
    auto const held = cache.lock();
    if (!held)
        co_return Standing{};
    co_return Standing{.bytes = held->cachedBytes(), .unused = held->longestUnused(bytes)};
}

Task<std::size_t> ListingBudget::evict(CacheRef cache, std::vector<ListingCache::Unused> groups)
{
    auto const held = cache.lock();
    if (!held)
        co_return 0;
    held->evict(groups);
    co_return held->cachedBytes();
}

void ListingBudget::note(CacheRef const &cache, std::size_t bytes)
{
    if (auto const member = members.find(cache); member != members.end())
        member->second.bytes = bytes;
}

std::size_t ListingBudget::held() const
{
    std::size_t bytes = 0;
    for (auto const &[cache, member] : members)
        bytes += member.bytes;
    return bytes;
}

} // namespace tw
