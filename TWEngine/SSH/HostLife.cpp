#include "TWEngine/SSH/HostLife.h"

#include <algorithm>
#include <ranges>
#include <tuple>
#include <utility>

namespace tw {

namespace {

using Kind = HostLife::Order::Kind;

void append(HostLife::Orders &orders, HostLife::Orders const &more)
{
    orders.insert(orders.end(), more.begin(), more.end());
}

} // namespace

bool HostLife::isAttempting() const
{
    switch (phase) {
    case Phase::reaching:
    case Phase::loggingIn:
    case Phase::asking:
    case Phase::waitingForShell:
        return true;
    case Phase::notTried:
    case Phase::up:
    case Phase::silent:
    case Phase::lost:
    case Phase::givenUp:
        break;
    }
    return false;
}

void HostLife::enter(Phase next, Time now)
{
    phase = next;
    since = now;
    deadline.reset();
}

void HostLife::enterWithin(Duration limit, Phase next, Time now)
{
    enter(next, now);
    phaseLimit = limit;
    deadline = now + limit;
}

HostLife::Orders HostLife::want(Way way, Time now)
{
    if (isUp())
        return {};
    Orders orders;
    if (isAttempting()) {
        // A quiet attempt fails at the first question, so it is of no use to a caller that may ask the user.
        if (way == Way::quiet || attemptWay == Way::asking) {
            ++callers;
            return {};
        }
        orders = endAttempt(Order::Why::superseded, Phase::givenUp, now);
    }
    append(orders, begin(way, now));
    callers = 1;
    return orders;
}

HostLife::Orders HostLife::begin(Way way, Time now)
{
    attemptWay = way;
    attemptBegan = now;
    openQuestions = 0;
    attemptHadQuestion = false;
    enterWithin(limits.reaching, Phase::reaching, now);
    *deadline += grace;
    return {{.kind = Kind::beginAttempt, .number = ++attempts, .way = way}};
}

HostLife::Orders HostLife::endAttempt(Order::Why why, Phase next, Time now)
{
    enter(next, now);
    callers = 0;
    return {{.kind = Kind::endAttempt, .number = attempts, .why = why}};
}

HostLife::Orders HostLife::leave(std::uint64_t attempt, Time now)
{
    if (!isCurrent(attempt) || --callers > 0)
        return {};
    return endAttempt(Order::Why::nobodyWaits, Phase::givenUp, now);
}

void HostLife::limitReaching(std::uint64_t attempt, Duration limit)
{
    if (!isCurrent(attempt) || phase != Phase::reaching)
        return;
    phaseLimit = limit;
    deadline = attemptBegan + limit + grace;
}

void HostLife::reached(std::uint64_t attempt, ClientStage stage, Time now)
{
    if (!isCurrent(attempt) || stage == ClientStage::reaching)
        return;
    auto const next = stage == ClientStage::loggingIn ? Phase::loggingIn : Phase::waitingForShell;
    auto const limit = stage == ClientStage::loggingIn ? limits.loggingIn : limits.waitingForShell;
    if (phase == Phase::asking) {
        beforeQuestion = next;
        remaining = phaseLimit = limit;
    } else {
        enterWithin(limit, next, now);
    }
}

void HostLife::questionOpened(std::uint64_t attempt, Time now)
{
    if (!isCurrent(attempt) || ++openQuestions > 1)
        return;
    attemptHadQuestion = true;
    beforeQuestion = phase;
    remaining = *deadline - now;
    enter(Phase::asking, now);
}

void HostLife::questionClosed(std::uint64_t attempt, Time now)
{
    if (!isCurrent(attempt) || phase != Phase::asking || --openQuestions > 0)
        return;
    enter(beforeQuestion, now);
    deadline = now + remaining;
}

HostLife::Orders HostLife::refuse(std::uint64_t attempt, Order::Why why, Time now)
{
    if (!isCurrent(attempt))
        return {};
    return endAttempt(why, Phase::givenUp, now);
}

void HostLife::attemptUp(std::uint64_t attempt, Time now, Sharing sharing)
{
    if (!isCurrent(attempt))
        return;
    ++timesUp;
    callers = 0;
    connectionHadQuestion = attemptHadQuestion;
    forgetSessions();
    stateOf(Role::first) = SessionState::up;
    if (sharing == Sharing::users) {
        for (auto const role : workRoles | std::views::drop(workSessionsBesideUser))
            stateOf(role) = SessionState::refused;
    }
    lastHeard = now;
    enter(Phase::up, now);
}

void HostLife::attemptFailed(std::uint64_t attempt, Time now)
{
    if (!isCurrent(attempt))
        return;
    callers = 0;
    enter(Phase::givenUp, now);
}

void HostLife::forgetSessions()
{
    sessions = {};
    inFlight.clear();
    isSpareBegun = false;
    replacing = 0;
    replaceAgain.reset();
}

HostLife::Route HostLife::route(Choice choice, Busy const &busy) const
{
    auto const wanted = [&] {
        switch (choice) {
        case Choice::interactive:
            return busy.isFirstHeldUp &&
                           std::ranges::all_of(inFlight, &Request::isRepeatable, &Requests::value_type::second)
                       ? Role::spare
                       : Role::first;
        case Choice::background:
        case Choice::backgroundIfReady:
            return Role::background;
        case Choice::work:
        case Choice::longWork:
            break;
        }
        return Role::work;
    }();
    if (wanted == Role::work)
        return routeOfWork(choice, busy);
    auto const isRefused = stateOf(wanted) == SessionState::refused;
    auto const role = isRefused && choice != Choice::background ? Role::first : wanted;
    return {.role = role, .isReady = stateOf(role) != SessionState::down};
}

/// An idle session, one that is not connected yet, or the one that is least busy, in this order.
HostLife::Route HostLife::routeOfWork(Choice choice, Busy const &busy) const
{
    using Rank = std::tuple<int, std::size_t, std::size_t>;
    auto const rankOf = [&](Role role) -> Rank {
        auto const &load = busy.work.at(workIndex(role));
        if (stateOf(role) == SessionState::down)
            return {1, 0, 0};
        return {load.requests == 0 ? 0 : 2, load.longOnes, load.requests};
    };
    std::size_t usable = 0;
    std::size_t longOnes = 0;
    std::optional<Role> best;
    for (auto const role : workRoles) {
        if (stateOf(role) == SessionState::refused)
            continue;
        ++usable;
        longOnes += busy.work.at(workIndex(role)).longOnes;
        if (!best || rankOf(role) < rankOf(*best))
            best = role;
    }
    if (!best)
        return {.role = Role::first, .isReady = true};
    // One session stays free of long work, if there are several.
    if (choice == Choice::longWork && longOnes >= std::max<std::size_t>(usable - 1, 1))
        return {.role = *best, .hasToWait = true};
    return {.role = *best, .isReady = stateOf(*best) == SessionState::up};
}

void HostLife::sessionUp(Role role)
{
    stateOf(role) = SessionState::up;
}

void HostLife::sessionRefused(Role role)
{
    stateOf(role) = SessionState::refused;
    if (!isWork(role))
        return;
    for (auto const other : workRoles) {
        if (stateOf(other) == SessionState::down)
            stateOf(other) = SessionState::refused;
    }
}

HostLife::Orders HostLife::sessionLost(Role role, std::uint64_t generation, Time now)
{
    if (generation != timesUp || !isUp())
        return {};
    auto const wasUp = std::exchange(stateOf(role), SessionState::down) == SessionState::up;
    if (role == Role::spare)
        isSpareBegun = false;
    auto const endsTheConnection = role == Role::first || (role == Role::background && wasUp);
    if (!endsTheConnection)
        return {};
    Orders orders;
    if (replacing != 0)
        orders.push_back({.kind = Kind::endReplacing, .number = replacing});
    forgetSessions();
    enter(Phase::lost, now);
    return orders;
}

void HostLife::spareTookOver()
{
    ++timesUp; // what was asked over the old session fails, and is no loss of the new one
    stateOf(Role::spare) = SessionState::down;
    isSpareBegun = false;
}

HostLife::Orders HostLife::asked(std::uint64_t request, bool isRepeatable, Time now)
{
    inFlight.insert_or_assign(request, Request{.isRepeatable = isRepeatable, .asked = now});
    if (phase == Phase::silent && replacing == 0)
        return beginReplacing();
    return {};
}

void HostLife::settled(std::uint64_t request)
{
    inFlight.erase(request);
}

HostLife::Orders HostLife::heard(Time now)
{
    lastHeard = now;
    if (phase != Phase::silent)
        return {};
    enter(Phase::up, now);
    replaceAgain.reset();
    if (auto const number = std::exchange(replacing, 0))
        return {{.kind = Kind::endReplacing, .number = number}};
    return {};
}

HostLife::Orders HostLife::beginReplacing()
{
    replaceAgain.reset();
    replacing = ++lastReplacing;
    return {{.kind = Kind::beginReplacing, .number = replacing}};
}

HostLife::Orders HostLife::replacementUp(std::uint64_t number, Time now)
{
    if (replacing != number || phase != Phase::silent)
        return {};
    ++timesUp;
    connectionHadQuestion = false;
    forgetSessions();
    stateOf(Role::first) = SessionState::up;
    lastHeard = now;
    enter(Phase::up, now);
    return {{.kind = Kind::replace, .number = number}};
}

void HostLife::replacementFailed(std::uint64_t number, Time now)
{
    if (replacing != number)
        return;
    replacing = 0;
    replaceAgain = now + silenceLimit;
}

HostLife::Orders HostLife::end(Time now)
{
    ++timesEnded;
    Orders orders;
    if (isAttempting())
        orders = endAttempt(Order::Why::ended, Phase::notTried, now);
    if (replacing != 0)
        orders.push_back({.kind = Kind::endReplacing, .number = replacing});
    forgetSessions();
    enter(Phase::notTried, now);
    return orders;
}

HostLife::Orders HostLife::tick(Time now)
{
    if (isAttempting() && deadline && now >= *deadline)
        return endAttempt(Order::Why::noAnswer, Phase::givenUp, now);
    Orders orders;
    if (auto const due = spareAt(); due && now >= *due) {
        isSpareBegun = true;
        orders.push_back({.kind = Kind::beginSpare});
    }
    if (auto const due = silentAt(); due && now >= *due) {
        enter(Phase::silent, *due - silenceLimit);
        append(orders, beginReplacing());
    }
    if (phase == Phase::silent && !inFlight.empty() && replaceAgain && now >= *replaceAgain)
        append(orders, beginReplacing());
    return orders;
}

/// Since when the longest request waits, or nothing.
std::optional<HostLife::Time> HostLife::awaitedSince() const
{
    std::optional<Time> oldest;
    for (auto const &[id, request] : inFlight) {
        if (!oldest || request.asked < *oldest)
            oldest = request.asked;
    }
    return oldest;
}

std::optional<HostLife::Time> HostLife::spareAt() const
{
    auto const oldest = awaitedSince();
    if (phase != Phase::up || isSpareBegun || stateOf(Role::spare) != SessionState::down || !oldest)
        return std::nullopt;
    return *oldest + lateAnswer;
}

std::optional<HostLife::Time> HostLife::silentAt() const
{
    auto const oldest = awaitedSince();
    if (phase != Phase::up || !oldest)
        return std::nullopt;
    return std::max(*oldest, lastHeard) + silenceLimit;
}

std::optional<HostLife::Time> HostLife::wakeAt() const
{
    std::optional<Time> earliest;
    auto const consider = [&](std::optional<Time> time) {
        if (time && (!earliest || *time < *earliest))
            earliest = time;
    };
    if (isAttempting())
        consider(deadline);
    consider(spareAt());
    consider(silentAt());
    if (phase == Phase::silent && !inFlight.empty())
        consider(replaceAgain);
    return earliest;
}

} // namespace tw
