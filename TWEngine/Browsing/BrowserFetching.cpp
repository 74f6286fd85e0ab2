// How a Browser fetches: what it asks its provider for, and what becomes of the answers.

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/ListingParser.h"
#include "TWEngine/Browsing/Browser.h"

namespace tw {

int Browser::interactiveDepth() const
{
    return std::min(provider->maxUsefulDepth(), config.interactiveDepth);
}

int Browser::horizon(std::string const &path) const
{
    return std::min(provider->maxUsefulDepth(), depths.depthFor(path, config.prefetchDepth));
}

double Browser::ageOf(ListingCache::Group const &group) const
{
    return secondsBetween(group.fetchedAt, clock->now());
}

void Browser::ensureHorizon(std::string const &path)
{
    auto const depth = horizon(path);
    if (depth < 2)
        return;
    auto const *const entry = cache->find(path);
    // A by-product of a scan from higher up does not cover what is below the path.
    auto const isCovered = entry && entry->group->fetch.root == path && entry->group->fetch.depth >= depth &&
                           ageOf(*entry->group) <= config.ttl.count();
    if (!isCovered)
        scanBehind(path, depth, Reason::ahead);
}

void Browser::scanBehind(std::string const &root, int depth, Reason reason)
{
    auto const needsAllRoom = depth == 1 && depths.isWide(root);
    carryOut(schedule.want({.root = root,
                            .depth = depth,
                            .priority = needsAllRoom ? FetchPriority::interactive : FetchPriority::background,
                            .reason = reason},
                           clock->steadyNow()));
}

Task<void> Browser::revalidate(std::string path)
{
    return onStrand(strand, revalidateHere(shared_from_this(), ListingParser::normalize(path)));
}

Task<void> Browser::revalidateHere(std::shared_ptr<Browser> self, std::string path)
{
    auto const lastBefore = self->schedule.lastBegun();
    for (;;) {
        auto const depth = self->horizon(path);
        self->scanBehind(path, depth, Reason::revalidate);
        auto const number = self->schedule.runningScan(path, depth);
        if (!number)
            co_return;
        auto const fetch = self->running.at(*number);
        if (*number > lastBefore) {
            co_await fetch.arrival();
            co_return;
        }
        co_await fetch.end();
    }
}

/// The number of the fetch.
std::uint64_t Browser::fetchToAwait(std::string const &root)
{
    auto const depth = interactiveDepth();
    if (auto const *const fetch = schedule.joinable(root, depth))
        return fetch->number;
    for (auto const number : schedule.cancelLeft())
        running.at(number).cancel();
    auto const fetch = schedule.beginAwaited(root, depth, clock->steadyNow());
    begin(fetch);
    return fetch.number;
}

void Browser::carryOut(FetchSchedule::Orders const &orders)
{
    for (auto const number : orders.cancel)
        running.at(number).cancel();
    for (auto const &fetch : orders.begin) {
        counters.prefetches += fetch.reason == Reason::revalidate ? 0 : 1;
        begin(fetch);
    }
}

void Browser::begin(Fetch const &fetch)
{
    running.emplace(fetch.number,
                    RunningFetch::start(strand.executor(), fetch.root, performFetch(weak_from_this(), fetch)));
}

Task<Listings> Browser::ask(Fetch const &fetch)
{
    if (!fetch.hasAllRoom() || fetch.depth > 1)
        return provider->fetch(fetch.root, fetch.depth, fetch.priority);
    auto const pass = [weak = weak_from_this(), ground = strand.executor(),
                       number = fetch.number](DirectorySnapshot const &part) {
        ground->post([weak, number, part] {
            auto const self = weak.lock();
            if (!self)
                return;
            if (auto const found = self->running.find(number); found != self->running.end())
                found->second.part(part);
        });
    };
    return provider->fetchWhole(fetch.root, pass);
}

Task<FetchEnd> Browser::performFetch(std::weak_ptr<Browser> weak, Fetch fetch)
{
    auto self = weak.lock();
    if (!self)
        throw Cancelled();
    auto const provider = self->provider;
    auto const clock = self->clock;
    auto asking = self->ask(fetch);
    self.reset(); // a scan does not keep its Browser alive

    auto const started = clock->steadyNow();
    auto answer = co_await outcomeOf(std::move(asking));
    auto const elapsed = clock->steadyNow() - started;

    self = weak.lock();
    if (!self || !self->schedule.isRunning(fetch.number))
        throw Cancelled(); // a shutdown has come in between, and the answer is dropped
    if (!answer.value) {
        self->end(fetch);
        answer.take();
    }
    co_return self->takeIn(fetch, *std::move(answer.value), elapsed);
}

void Browser::end(Fetch const &fetch)
{
    running.erase(fetch.number);
    carryOut(schedule.end(fetch.number, clock->steadyNow()));
}

FetchEnd Browser::takeIn(Fetch const &fetch, Listings listings, std::chrono::duration<double> elapsed)
{
    // Before the end of the fetch, behind which it is not known any more what was forgotten meanwhile.
    auto const hasRoot = listings.contains(fetch.root);
    auto const isCut = !listings.empty() && (hasRoot ? listings.at(fetch.root) : listings.begin()->second).truncated();
    std::erase_if(listings, [&](auto const &each) { return schedule.isStale(each.first, fetch.number); });
    end(fetch);

    auto const isSlow = elapsed > config.slowFetchThreshold;
    if (fetch.depth >= 2 ? isSlow || isCut : isCut && !fetch.hasAllRoom())
        depths.lower(fetch.root, fetch.depth);
    auto change = cache->put(
        std::move(listings),
        {.root = fetch.root, .depth = fetch.depth, .number = fetch.number, .hadAllRoom = fetch.hasAllRoom()});
    memory->report(strand, cache);
    for (auto const &snapshot : change.changed)
        subscribers.send(snapshot);
    announceArrivals(change.taken);
    kept.save(fetch.root, fetch.depth, std::move(change.taken), !change.changed.empty(), config.persistInterval);
    if (isCut && !fetch.hasAllRoom())
        askForLess(fetch);
    if (!hasRoot)
        return FetchEnd::absent;
    return cache->find(fetch.root) ? FetchEnd::arrived : FetchEnd::stale;
}

/// What is in the cache was fetched after it was last forgotten, so that it is as good as what the callers wait for.
void Browser::announceArrivals(Listings const &taken) const
{
    for (auto const &[number, fetch] : running) {
        if (taken.contains(fetch.root()))
            fetch.arrive();
    }
}

/// Behind a scan that brought a part of its root only, which is not shown: a caller that was promised a newer listing
/// of the folder gets it from a smaller question.
void Browser::askForLess(Fetch const &fetch)
{
    auto const *const entry = cache->find(fetch.root);
    if (entry && (fetch.reason == Reason::revalidate || ageOf(*entry->group) > config.ttl.count()))
        scanBehind(fetch.root, horizon(fetch.root), Reason::revalidate);
}

} // namespace tw
