#include "TWEngine/Browsing/Browser.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ListingParser.h"

namespace tw {

namespace {

std::string scanKey(std::string const &root, int depth)
{
    return root + '\0' + std::to_string(depth);
}

std::string parentOf(std::string const &path)
{
    auto const slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

} // namespace

Browser::Browser(std::shared_ptr<FileSystemProvider> source, Collaborators collaborators, Config settings)
    : provider(std::move(source)),
      strand(std::move(collaborators.strand)),
      clock(std::move(collaborators.clock)),
      persistIdentity(provider->persistentCacheIdentity()),
      store(persistIdentity ? std::move(collaborators.store) : nullptr),
      config(settings),
      cache(settings.maxCachedBytes)
{
}

template <class Function>
Task<std::invoke_result_t<Function>> Browser::onOwnStrand(Function function)
{
    // A static coroutine with arguments: the function, which holds this object, lies in the frame.
    static constexpr auto run = [](Function work) -> Task<std::invoke_result_t<Function>> { co_return work(); };
    return onStrand(strand, run(std::move(function)));
}

Task<OpenResult> Browser::open(std::string path)
{
    // Not a coroutine: the owner and the argument are in the frame before anything can suspend.
    return onStrand(strand, openHere(shared_from_this(), ListingParser::normalize(path)));
}

Task<OpenResult> Browser::openHere(std::shared_ptr<Browser> self, std::string path)
{
    ++self->counters.opens;
    if (auto warm = self->openWarm(path))
        co_return *std::move(warm);

    if (self->store) {
        auto const before = self->forgettings;
        auto stored = co_await self->store->load(*self->persistIdentity, path);
        // Another open may have brought a listing meanwhile, and the store's must not replace a newer one.
        if (auto warm = self->openWarm(path))
            co_return *std::move(warm);
        // What was loaded may have been forgotten meanwhile.
        if (stored && self->forgettings == before)
            co_return self->openStored(*std::move(stored), path);
    }

    ++self->counters.coldFetches;
    for (auto isSettled = false; !isSettled && !self->cache.find(path);) {
        auto const fetch = self->fetchToAwait(path);
        isSettled = co_await fetch.wait();
    }
    auto const *const entry = self->cache.find(path);
    if (!entry)
        throw BrowserError::NotADirectory(path);
    OpenResult result{.snapshot = entry->snapshot, .isStale = false, .wasCold = true};
    self->ensureHorizon(path);
    co_return result;
}

std::optional<OpenResult> Browser::openWarm(std::string const &path)
{
    auto const *const entry = cache.find(path);
    if (!entry)
        return std::nullopt;
    ++counters.cacheHits;
    cache.touch(*entry->group, clock->now());
    auto const isStale = ageOf(*entry->group) > config.ttl.count();
    OpenResult result{.snapshot = entry->snapshot, .isStale = isStale, .wasCold = false};
    if (isStale)
        startFetch(path, horizon(path), Reason::revalidate);
    ensureHorizon(path);
    return result;
}

OpenResult Browser::openStored(DirectorySnapshot snapshot, std::string const &path)
{
    ++counters.diskHits;
    cache.adopt(snapshot, path);
    // What comes from a disk is stale whatever its age: the program was not there to see it change.
    startFetch(path, horizon(path), Reason::revalidate);
    ensureHorizon(path);
    return {.snapshot = std::move(snapshot), .isStale = true, .wasCold = false};
}

int Browser::horizon(std::string const &path) const
{
    auto const lowered = depthOverride.find(path);
    return std::min(provider->maxUsefulDepth(),
                    lowered != depthOverride.end() ? lowered->second : config.prefetchDepth);
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
    auto const *const entry = cache.find(path);
    // A by-product of a scan from higher up does not cover what is below the path.
    auto const isCovered = entry && entry->group->fetch.root == path && entry->group->fetch.depth >= depth &&
                           ageOf(*entry->group) <= config.ttl.count();
    if (!isCovered)
        startFetch(path, depth, Reason::prefetch);
}

void Browser::startFetch(std::string const &root, int depth, Reason reason)
{
    if (inFlight.contains(scanKey(root, depth)))
        return;
    if (reason == Reason::prefetch)
        ++counters.prefetches;
    auto const needsAllRoom = depth == 1 && wideFolders.contains(root);
    launch(root, depth, reason, needsAllRoom ? FetchPriority::interactive : FetchPriority::background);
}

SharedTask<bool> Browser::fetchToAwait(std::string const &root)
{
    auto const depth = std::min(provider->maxUsefulDepth(), config.interactiveDepth);
    auto const running = inFlight.find(scanKey(root, depth));
    if (running != inFlight.end()) {
        if (!isOvertaken(root, running->second.number))
            return running->second.task;
        overtaken.push_back(running->second);
    }
    return launch(root, depth, Reason::cold, FetchPriority::interactive);
}

bool Browser::isOvertaken(std::string const &path, std::uint64_t number) const
{
    auto const isBefore = [number](auto const &forgotten, std::string const &at) {
        auto const found = forgotten.find(at);
        return found != forgotten.end() && number <= found->second;
    };
    if (isBefore(invalidatedAt, path))
        return true;
    if (treeForgottenAt.empty())
        return false;
    for (auto above = path; above != "/"; above = parentOf(above)) {
        if (isBefore(treeForgottenAt, above))
            return true;
    }
    return isBefore(treeForgottenAt, "/");
}

SharedTask<bool> Browser::launch(std::string const &root, int depth, Reason reason, FetchPriority priority)
{
    if (inFlight.empty() && overtaken.empty()) {
        invalidatedAt.clear(); // nothing is under way that began before
        treeForgottenAt.clear();
    }
    Scan scan{.key = scanKey(root, depth),
              .root = root,
              .depth = depth,
              .priority = priority,
              .number = ++lastNumber,
              .reason = reason};
    auto const key = scan.key;
    auto const number = scan.number;
    auto const task = SharedTask<bool>::start(strand.executor(), performFetch(weak_from_this(), std::move(scan)));
    inFlight.insert_or_assign(key, Running{task, number});
    return task;
}

Task<bool> Browser::performFetch(std::weak_ptr<Browser> weak, Scan scan)
{
    auto self = weak.lock();
    if (!self)
        co_return true;
    auto const provider = self->provider;
    auto const clock = self->clock;
    self.reset(); // a scan does not keep its Browser alive

    auto const context = co_await currentContext();
    auto const started = clock->steadyNow();
    Listings listings;
    std::exception_ptr failure;
    try {
        listings = co_await provider->fetch(scan.root, scan.depth, scan.priority);
    } catch (...) {
        failure = std::current_exception();
    }
    auto const elapsed = clock->steadyNow() - started;

    self = weak.lock();
    if (!self)
        co_return true;
    self->forgetScan(scan);
    if (failure)
        std::rethrow_exception(failure);
    if (context.stop.stop_requested())
        throw Cancelled();
    auto const hasRoot = listings.contains(scan.root);
    if (!listings.empty())
        self->takeIn(scan, std::move(listings), elapsed);
    co_return !hasRoot || self->cache.find(scan.root);
}

void Browser::forgetScan(Scan const &scan)
{
    auto const running = inFlight.find(scan.key);
    if (running != inFlight.end() && running->second.number == scan.number)
        inFlight.erase(running);
    std::erase_if(overtaken, [&](Running const &each) { return each.number == scan.number; });
}

void Browser::takeIn(Scan const &scan, Listings listings, std::chrono::duration<double> elapsed)
{
    auto const asked = listings.find(scan.root);
    auto const isCut = (asked != listings.end() ? asked : listings.begin())->second.truncated();
    auto const isSlow = elapsed > config.slowFetchThreshold;
    if (scan.depth >= 2 && (isSlow || isCut))
        depthOverride[scan.root] = scan.depth - 1;

    std::erase_if(listings, [&](auto const &each) { return isOvertaken(each.first, scan.number); });
    auto change =
        cache.put(std::move(listings),
                  {.root = scan.root, .depth = scan.depth, .number = scan.number, .hadAllRoom = scan.hasAllRoom()});
    for (auto const &snapshot : change.changed)
        publish(snapshot);
    persist(scan, std::move(change.taken), !change.changed.empty());
    if (isCut && !scan.hasAllRoom())
        askForLess(scan);
}

/// Behind a scan that brought a part of its root only, which is not shown: whoever was promised a newer listing of the
/// folder gets it from a smaller question.
void Browser::askForLess(Scan const &scan)
{
    if (scan.depth == 1)
        wideFolders.insert(scan.root);
    auto const *const entry = cache.find(scan.root);
    if (entry && (scan.reason == Reason::revalidate || ageOf(*entry->group) > config.ttl.count()))
        startFetch(scan.root, horizon(scan.root), Reason::revalidate);
}

void Browser::persist(Scan const &scan, Listings listings, bool changed)
{
    if (!store || listings.empty())
        return;
    auto const now = clock->now();
    auto const last = lastPersist.find(scan.key);
    if (!changed && last != lastPersist.end() && secondsBetween(last->second, now) < config.persistInterval.count())
        return;
    lastPersist.insert_or_assign(scan.key, now);
    spawn({strand.executor(), {}}, store->save(*persistIdentity, std::move(listings)));
}

void Browser::publish(DirectorySnapshot const &snapshot) const
{
    for (auto const &[number, sink] : updateSinks)
        sink.send(snapshot);
}

Task<std::optional<DirectorySnapshot>> Browser::cached(std::string path)
{
    return onOwnStrand([self = shared_from_this(), key = ListingParser::normalize(path)] {
        auto const *const entry = self->cache.find(key);
        return entry ? std::optional(entry->snapshot) : std::nullopt;
    });
}

Task<std::optional<DirectorySnapshot>> Browser::remembered(std::string path)
{
    return onStrand(strand, rememberedHere(shared_from_this(), ListingParser::normalize(path)));
}

Task<std::optional<DirectorySnapshot>> Browser::rememberedHere(std::shared_ptr<Browser> self, std::string path)
{
    if (auto const *const entry = self->cache.find(path))
        co_return entry->snapshot;
    if (!self->store)
        co_return std::nullopt;
    auto stored = co_await self->store->load(*self->persistIdentity, path);
    co_return stored;
}

Task<void> Browser::refresh(std::string path)
{
    return onOwnStrand([self = shared_from_this(), key = ListingParser::normalize(path)] {
        self->startFetch(key, self->horizon(key), Reason::revalidate);
    });
}

Task<void> Browser::prefetch(std::string path)
{
    return onOwnStrand([self = shared_from_this(), key = ListingParser::normalize(path)] {
        auto const *const entry = self->cache.find(key);
        if (!entry || self->ageOf(*entry->group) > self->config.ttl.count())
            self->startFetch(key, self->horizon(key), Reason::prefetch);
    });
}

Task<void> Browser::invalidate(std::string path)
{
    return onOwnStrand(
        [self = shared_from_this(), key = ListingParser::normalize(path)] { self->invalidateHere(key); });
}

void Browser::invalidateHere(std::string const &path)
{
    // Whatever the depth, so that the next fetch of the path is stored at once.
    auto const prefix = path + '\0';
    std::erase_if(lastPersist, [&](auto const &entry) { return entry.first.starts_with(prefix); });
    if (store)
        spawn({strand.executor(), {}}, store->remove(*persistIdentity, path));
    cache.dropGroupOf(path);
    ++forgettings;
    if (!inFlight.empty() || !overtaken.empty())
        invalidatedAt.insert_or_assign(path, lastNumber);
}

Task<void> Browser::makeDirectory(std::string path)
{
    auto where = ListingParser::normalize(path);
    return onStrand(strand,
                    writeHere(shared_from_this(),
                              [where](FileSystemWriter &writer) { return writer.makeDirectory(where); }, {where}));
}

Task<void> Browser::remove(std::vector<std::string> paths)
{
    for (auto &path : paths)
        path = ListingParser::normalize(path);
    return onStrand(
        strand,
        writeHere(shared_from_this(), [paths](FileSystemWriter &writer) { return writer.remove(paths); }, paths));
}

Task<void> Browser::rename(std::string from, std::string to)
{
    from = ListingParser::normalize(from);
    to = ListingParser::normalize(to);
    return onStrand(strand,
                    writeHere(shared_from_this(),
                              [from, to](FileSystemWriter &writer) { return writer.rename(from, to); }, {from, to}));
}

Task<void> Browser::writeHere(std::shared_ptr<Browser> self, Write write, std::vector<std::string> touched)
{
    auto const writer = self->writer();
    if (!writer)
        throw FileOperationError::Unsupported("that destination is read-only");
    auto outcome = co_await outcomeOf(write(*writer));
    for (auto const &path : touched) {
        self->forgetTree(path);
        self->invalidateHere(parentOf(path));
    }
    outcome.take();
}

void Browser::forgetTree(std::string const &path)
{
    auto const below = path == "/" ? path : path + '/';
    std::erase_if(lastPersist, [&](auto const &entry) { return entry.first.starts_with(below); });
    if (store)
        spawn({strand.executor(), {}}, store->removeTree(*persistIdentity, path));
    cache.dropGroupsBelow(path);
    invalidateHere(path);
    if (!inFlight.empty() || !overtaken.empty())
        treeForgottenAt.insert_or_assign(path, lastNumber);
}

Task<void> Browser::invalidateAll()
{
    return onOwnStrand([self = shared_from_this()] {
        self->cache.clear();
        self->depthOverride.clear();
        self->wideFolders.clear();
    });
}

Task<UpdateStream<DirectorySnapshot>> Browser::updates()
{
    return onStrand(strand, updatesHere(shared_from_this()));
}

Task<UpdateStream<DirectorySnapshot>> Browser::updatesHere(std::shared_ptr<Browser> self)
{
    auto const number = ++self->lastNumber;
    auto const forget = [weak = self->weak_from_this(), number, executor = self->strand.executor()] {
        executor->post([weak, number] {
            if (auto const browser = weak.lock())
                browser->updateSinks.erase(number);
        });
    };
    auto ends = UpdateStream<DirectorySnapshot>::make(forget);
    self->updateSinks.emplace(number, ends.sender);
    co_return std::move(ends.stream);
}

Task<void> Browser::connect()
{
    return onStrand(strand, provider->connect());
}

Task<void> Browser::shutdown()
{
    return onStrand(strand, shutdownHere(shared_from_this()));
}

Task<void> Browser::shutdownHere(std::shared_ptr<Browser> self)
{
    auto running = std::exchange(self->overtaken, {});
    for (auto const &[key, scan] : std::exchange(self->inFlight, {}))
        running.push_back(scan);
    for (auto const &scan : running)
        scan.task.cancel();
    for (auto const &[number, sink] : std::exchange(self->updateSinks, {}))
        sink.finish();
    // First, since a question to a host is waited for until the session that it went over has ended.
    co_await self->provider->disconnect();
    for (auto const &scan : running)
        co_await outcomeOf(scan.task.wait()); // how it ended is nobody's business any more
}

Task<Browser::Stats> Browser::stats()
{
    return onOwnStrand([self = shared_from_this()] { return self->counters; });
}

} // namespace tw
