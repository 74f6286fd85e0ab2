#include "Tarnwick/Panes/FolderWatcher.h"

#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Provider/CommandHost.h"
#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Shell/FolderFingerprint.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "Tarnwick/Connections/ConnectionItem.h"

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

/// So many doublings of the shortest interval are longer than the longest wait.
constexpr int mostDoublings = 8;

std::chrono::milliseconds inMilliseconds(std::chrono::duration<double> time)
{
    return std::chrono::ceil<std::chrono::milliseconds>(time);
}

/// Watchers at the shortest interval probe at the same moments, so that a program with two panes wakes once and not
/// twice. The first wait is half as long again or shorter, all others are as long as the interval.
std::chrono::nanoseconds untilNextBeat(std::chrono::steady_clock::time_point now)
{
    using Beat = std::chrono::duration<std::int64_t, std::ratio<3>>;
    static_assert(std::chrono::duration<double>(Beat(1)).count() == PollInterval::floor);
    auto const next = now.time_since_epoch() + Beat(1);
    return std::chrono::round<Beat>(next) - now.time_since_epoch();
}

/// A link is to be looked through: its own row never changes.
std::string fingerprintOf(std::string const &path, ShellDialect dialect)
{
    if (dialect == ShellDialect::powershell)
        return FolderFingerprint::windows(path);
    return FolderFingerprint::posix(path.ends_with('/') ? path : path + '/');
}

} // namespace

FolderWatcher::FolderWatcher(Ports ports)
    : with(std::move(ports)),
      debounce(with.mainContext, with.clock, [this] { readAgain(); }),
      timer(with.mainContext, with.clock, [this] { ring(); })
{
}

FolderWatcher::~FolderWatcher()
{
    events.request_stop();
}

bool FolderWatcher::isLocal() const
{
    return connection == localConnection;
}

void FolderWatcher::watch(std::string const &onConnection, std::string const &folder,
                          std::shared_ptr<Browser> const &source)
{
    if (connection == onConnection && path == folder && browser == source)
        return;
    stop();
    connection = onConnection;
    path = folder;
    browser = source;
    if (isLocal()) {
        listenForEvents();
        timer.set(inMilliseconds(readings.untilLook()));
    } else {
        probe(false);
    }
}

void FolderWatcher::stop()
{
    ++generation;
    events.request_stop();
    debounce.cancel();
    timer.cancel();
    interval.reset();
    readings = {};
    connection.clear();
    path.clear();
    browser.reset();
    hasEvents = isReading = readsOnceMore = isProbing = false;
    lastStamp.clear();
    dialect.reset();
    stuckProbes = 0;
}

void FolderWatcher::checkNow()
{
    if (!isWatching())
        return;
    if (isLocal())
        readAgain();
    else
        probe(true);
}

void FolderWatcher::ring()
{
    if (!isLocal())
        probe(true);
    else if (with.visibility() == Visibility::lookedAt)
        readAgain();
}

// This machine.

void FolderWatcher::listenForEvents()
{
    auto place = std::dynamic_pointer_cast<FolderEvents>(browser->providerRef());
    if (!place)
        return;
    hasEvents = true;
    events = std::stop_source();
    spawn({with.mainContext, events.get_token()}, listen(weak_from_this(), std::move(place), path, generation));
}

Task<void> FolderWatcher::listen(std::weak_ptr<FolderWatcher> weak, std::shared_ptr<FolderEvents> place,
                                 std::string path, std::uint64_t generation)
{
    auto const watch = co_await place->watchFolder(std::move(path));
    for (auto isThere = watch != nullptr; isThere;) {
        auto const event = co_await watch->next();
        auto const self = weak.lock();
        if (!self || self->generation != generation)
            co_return;
        isThere = event != FolderWatch::Event::gone;
        self->hasEvents = isThere;
        self->changed();
    }
    if (auto const self = weak.lock(); self && self->generation == generation)
        self->hasEvents = false; // the next reading asks for them again: the folder may be made anew
}

void FolderWatcher::changed()
{
    if (with.visibility() == Visibility::hidden)
        return;
    readings.changed(with.clock->steadyNow());
    if (!isReading)
        setDebounce();
}

void FolderWatcher::setDebounce()
{
    if (auto const due = readings.due())
        debounce.set(inMilliseconds(std::max(*due - with.clock->steadyNow(), RefreshPace::Duration::zero())));
}

void FolderWatcher::readAgain()
{
    if (isReading) {
        readsOnceMore = true;
        return;
    }
    isReading = true;
    debounce.cancel();
    timer.cancel();
    readings.readingBegan();
    if (isLocal() && !hasEvents)
        listenForEvents();
    spawn({with.mainContext, {}}, read(weak_from_this(), with.onChanged(), with.clock, generation));
}

Task<void> FolderWatcher::read(std::weak_ptr<FolderWatcher> weak, Task<void> reading, std::shared_ptr<Clock> clock,
                               std::uint64_t generation)
{
    auto const began = clock->steadyNow();
    co_await outcomeOf(std::move(reading));
    auto const self = weak.lock();
    if (self && self->generation == generation)
        self->readingEnded(began);
}

void FolderWatcher::readingEnded(RefreshPace::Time began)
{
    auto const now = with.clock->steadyNow();
    isReading = false;
    if (std::exchange(readsOnceMore, false))
        readings.changed(now);
    readings.readingEnded(began, now);
    setDebounce();
    if (isLocal())
        timer.set(inMilliseconds(readings.untilLook()));
}

// Hosts.

void FolderWatcher::probe(bool reportsFirst)
{
    auto host = browser ? browser->host() : nullptr;
    if (isProbing || !host || with.visibility() != Visibility::lookedAt)
        return;
    isProbing = true;
    timer.cancel();
    spawn({with.mainContext, {}},
          askHost(weak_from_this(), Question{std::move(host), dialect, path, reportsFirst}, with.clock, generation));
}

Task<void> FolderWatcher::askHost(std::weak_ptr<FolderWatcher> weak, Question question, std::shared_ptr<Clock> clock,
                                  std::uint64_t generation)
{
    if (!question.dialect) {
        auto const asked = co_await outcomeOf(question.host->dialect());
        question.dialect = asked.value.value_or(ShellDialect::posix);
    }
    auto const began = clock->steadyNow();
    auto const answer =
        co_await outcomeOf(question.host->runCommand({.text = fingerprintOf(question.path, *question.dialect),
                                                      .session = CommandSession::background,
                                                      .onLoss = CommandOnLoss::fails,
                                                      .limit = probeLimit}));
    std::chrono::duration<double> const cost = clock->steadyNow() - began;
    auto const self = weak.lock();
    if (!self || self->generation != generation)
        co_return;
    self->isProbing = false;
    if (answer.value) {
        self->stuckProbes = 0;
        self->dialect = question.dialect; // of a host that is up
        self->probed(std::string(trimmed(answer.value->output)), cost.count(), question.reportsFirst);
    } else if (failureIs<RemoteShellError::TimedOut>(answer.failure)) {
        self->stuckProbes = std::min(self->stuckProbes + 1, mostDoublings);
    }
    self->scheduleProbe();
}

void FolderWatcher::probed(std::string const &stamp, double cost, bool reportsFirst)
{
    auto const before = interval.seconds();
    interval.observed(cost);
    if (!stamp.empty()) {
        auto const isOther = !lastStamp.empty() && lastStamp != stamp;
        lastStamp = stamp;
        if (isOther)
            interval.sawChange();
        if (isOther && reportsFirst)
            readAgain();
    }
    if (interval.seconds() != before)
        with.onPaceChanged();
}

void FolderWatcher::scheduleProbe()
{
    if (stuckProbes == 0 && interval.seconds() == PollInterval::floor)
        return timer.set(untilNextBeat(with.clock->steadyNow()));
    auto const wait = std::chrono::duration<double>(interval.seconds() * std::exp2(stuckProbes));
    timer.set(inMilliseconds(std::min<std::chrono::duration<double>>(wait, longestWait)));
}

} // namespace tw
