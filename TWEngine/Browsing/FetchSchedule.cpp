#include "TWEngine/Browsing/FetchSchedule.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace tw {

namespace {

template <class A, class B>
bool isSameScan(A const &a, B const &b)
{
    return a.root == b.root && a.depth == b.depth;
}

} // namespace

FetchSchedule::Fetch const *FetchSchedule::joinable(std::string const &root, int depth) const
{
    for (auto const &[number, fetch] : running) {
        if (fetch.root == root && fetch.depth == depth && fetch.priority == FetchPriority::interactive &&
            !fetch.isCancelled && !isStale(root, number))
            return &fetch;
    }
    return nullptr;
}

void FetchSchedule::join(std::uint64_t number)
{
    if (auto const found = running.find(number); found != running.end())
        ++found->second.callers;
}

void FetchSchedule::leave(std::uint64_t number)
{
    if (auto const found = running.find(number); found != running.end())
        --found->second.callers;
}

std::vector<std::uint64_t> FetchSchedule::cancelLeft()
{
    std::vector<std::uint64_t> left;
    for (auto &[number, fetch] : running) {
        if (!fetch.hasAllRoom() || fetch.callers > 0 || fetch.isCancelled)
            continue;
        fetch.isCancelled = true;
        left.push_back(number);
    }
    return left;
}

FetchSchedule::Fetch FetchSchedule::beginAwaited(std::string const &root, int depth, Time now)
{
    if (atCursor && atCursor->root == root)
        atCursor.reset(); // the cursor's folder is entered; what is below it is wanted for another reason now
    return add({.root = root, .depth = depth, .priority = FetchPriority::interactive, .reason = {}, .began = now});
}

FetchSchedule::Orders FetchSchedule::want(Wish wish, Time now)
{
    if (wish.reason == Reason::cursor)
        atCursor.reset(); // the cursor has left that folder
    if (isCovered(wish))
        return {};
    keep(std::move(wish));
    return fillPlaces(now);
}

FetchSchedule::Orders FetchSchedule::end(std::uint64_t number, Time now)
{
    running.erase(number);
    if (running.empty())
        forgotten.clear();
    return fillPlaces(now);
}

void FetchSchedule::forget(std::string const &path, ForgottenPaths::Reach reach)
{
    forgotten.add(path, reach, lastNumber);
    if (running.empty())
        forgotten.clear();
}

void FetchSchedule::clear()
{
    running.clear();
    behind.clear();
    atCursor.reset();
    forgotten.clear();
}

std::optional<std::uint64_t> FetchSchedule::runningScan(std::string const &root, int depth) const
{
    for (auto const &[number, fetch] : running) {
        if (fetch.root == root && fetch.depth == depth && !fetch.isCancelled && !isStale(root, number))
            return number;
    }
    return std::nullopt;
}

bool FetchSchedule::isCovered(Wish const &wish) const
{
    auto const isRunningFresh = runningScan(wish.root, wish.depth).has_value();
    auto const isWaiting = [&](Wish const &other) { return isSameScan(other, wish); };
    return isRunningFresh || (wish.reason == Reason::cursor && std::ranges::any_of(behind, isWaiting));
}

void FetchSchedule::keep(Wish wish)
{
    if (wish.reason == Reason::cursor) {
        atCursor = std::move(wish);
        return;
    }
    if (atCursor && isSameScan(*atCursor, wish))
        atCursor.reset();
    std::erase_if(behind, [&](Wish const &other) { return isSameScan(other, wish); });
    behind.push_back(std::move(wish));
    if (behind.size() > waitingBehind)
        behind.pop_front();
}

FetchSchedule::Fetch const &FetchSchedule::add(Fetch fetch)
{
    fetch.number = ++lastNumber;
    return running.emplace(fetch.number, std::move(fetch)).first->second;
}

FetchSchedule::Orders FetchSchedule::fillPlaces(Time now)
{
    Orders orders;
    fill(Lane::behind, placesBehind, now, orders);
    fill(Lane::cursor, 1, now, orders);
    return orders;
}

void FetchSchedule::fill(Lane lane, std::size_t places, Time now, Orders &orders)
{
    std::vector<Fetch const *> taken;
    for (auto const &[number, fetch] : running) {
        if (fetch.reason && (*fetch.reason == Reason::cursor) == (lane == Lane::cursor))
            taken.push_back(&fetch);
    }
    while (taken.size() < places) {
        auto wish = takeNext(lane);
        if (!wish)
            return;
        auto const &fetch = add({.root = std::move(wish->root),
                                 .depth = wish->depth,
                                 .priority = wish->priority,
                                 .reason = wish->reason,
                                 .began = now});
        orders.begin.push_back(fetch);
        taken.push_back(&fetch);
    }
    if (!hasStartable(lane))
        return;
    for (auto const *const fetch : taken) {
        // A caller may have joined an interactive one.
        if (now - fetch->began > stuckAfter && fetch->priority == FetchPriority::background)
            orders.cancel.push_back(fetch->number);
    }
}

/// Of one root, one scan in the background runs at a time: two would only take twice the time. A wish waits behind a
/// fetch that callers wait for only if that does the same, and its answer is stale.
bool FetchSchedule::isStartable(Wish const &wish) const
{
    return std::ranges::none_of(running, [&](auto const &each) {
        return each.second.root == wish.root && (each.second.reason || each.second.depth == wish.depth);
    });
}

bool FetchSchedule::hasStartable(Lane lane) const
{
    if (lane == Lane::cursor)
        return atCursor && isStartable(*atCursor);
    return std::ranges::any_of(behind, [this](Wish const &wish) { return isStartable(wish); });
}

std::optional<FetchSchedule::Wish> FetchSchedule::takeNext(Lane lane)
{
    if (lane == Lane::cursor)
        return hasStartable(lane) ? std::exchange(atCursor, std::nullopt) : std::nullopt;
    // The newest first: that is the folder on show.
    auto const next =
        std::ranges::find_if(behind.rbegin(), behind.rend(), [this](Wish const &wish) { return isStartable(wish); });
    if (next == behind.rend())
        return std::nullopt;
    auto wish = std::move(*next);
    behind.erase(std::next(next).base());
    return wish;
}

} // namespace tw
