#include "TWEngine/Browsing/Browser.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ListingParser.h"

#include <set>

namespace tw {

Browser::Browser(std::shared_ptr<FileSystemProvider> source, Collaborators collaborators, Config settings)
    : provider(std::move(source)),
      strand(std::move(collaborators.strand)),
      clock(std::move(collaborators.clock)),
      memory(collaborators.memory ? std::move(collaborators.memory) : std::make_shared<ListingBudget>(strand)),
      cache(std::make_shared<ListingCache>()),
      config(settings),
      kept(std::move(collaborators.store), provider->persistentCacheIdentity(), strand.executor(), clock),
      subscribers(strand.executor())
{
}

template <class Function>
Task<std::invoke_result_t<Function>> Browser::onOwnStrand(Function function)
{
    // A static coroutine with arguments: the function, which holds this object, lies in the frame.
    static constexpr auto run = [](Function work) -> Task<std::invoke_result_t<Function>> { co_return work(); };
    return onStrand(strand, run(std::move(function)));
}

/// A caller that waits for a fetch, as long as this exists.
class Browser::Caller {
public:
    Caller(std::shared_ptr<Browser> waitsAt, std::uint64_t fetch) : browser(std::move(waitsAt)), number(fetch)
    {
        browser->schedule.join(number);
    }

    ~Caller() { browser->schedule.leave(number); }

    Caller(Caller const &) = delete;
    Caller &operator=(Caller const &) = delete;

private:
    std::shared_ptr<Browser> const browser;
    std::uint64_t const number;
};

Task<OpenResult> Browser::open(std::string path, PartTaker onPart)
{
    // Not a coroutine: the owner and the argument are in the frame before anything can suspend.
    return onStrand(strand, openHere(shared_from_this(), ListingParser::normalize(path), std::move(onPart)));
}

Task<OpenResult> Browser::openHere(std::shared_ptr<Browser> self, std::string path, PartTaker onPart)
{
    ++self->counters.opens;
    if (auto warm = self->openWarm(path))
        co_return *std::move(warm);

    if (self->kept.hasStore()) {
        auto const before = self->schedule.forgettings();
        auto stored = co_await self->kept.load(path);
        // Another open may have brought a listing meanwhile, and the store's must not replace a newer one.
        if (auto warm = self->openWarm(path))
            co_return *std::move(warm);
        // What was loaded may have been forgotten meanwhile.
        if (stored && self->schedule.forgettings() == before)
            co_return self->openStored(*std::move(stored), path);
    }

    ++self->counters.coldFetches;
    for (;;) {
        auto fetched = co_await awaitFetch(self, path, onPart);
        if (fetched)
            co_return *std::move(fetched);
    }
}

/// Nothing if the listing was forgotten before the caller went on, and is to be fetched again.
Task<std::optional<OpenResult>> Browser::awaitFetch(std::shared_ptr<Browser> self, std::string path, PartTaker onPart)
{
    auto const number = self->fetchToAwait(path);
    auto const fetch = self->running.at(number);
    if (onPart)
        fetch.watch(std::move(onPart));
    Caller const caller(self, number);
    auto const end = co_await fetch.arrival();
    co_return self->openFetched(path, end);
}

Task<OpenResult> Browser::reread(std::string path, PartTaker onPart)
{
    return onStrand(strand, rereadHere(shared_from_this(), ListingParser::normalize(path), std::move(onPart)));
}

Task<OpenResult> Browser::rereadHere(std::shared_ptr<Browser> self, std::string path, PartTaker onPart)
{
    ++self->counters.opens;
    ++self->counters.coldFetches;
    auto const lastBefore = self->schedule.lastBegun();
    for (;;) {
        auto const *const joinable = self->schedule.joinable(path, self->interactiveDepth());
        if (joinable && joinable->number <= lastBefore) {
            auto const earlier = self->running.at(joinable->number);
            Caller const caller(self, joinable->number);
            co_await earlier.end();
            continue;
        }
        if (!joinable)
            self->forget(path, ForgottenPaths::Reach::path);
        auto fetched = co_await awaitFetch(self, path, onPart);
        if (fetched)
            co_return *std::move(fetched);
    }
}

std::optional<OpenResult> Browser::openFetched(std::string const &path, FetchEnd end)
{
    auto const *const entry = cache->find(path);
    if (!entry && end == FetchEnd::absent)
        throw BrowserError::NotADirectory(path);
    if (!entry)
        return std::nullopt;
    OpenResult result{.snapshot = entry->snapshot, .isStale = false, .wasCold = true};
    ensureHorizon(path);
    return result;
}

std::optional<OpenResult> Browser::openWarm(std::string const &path)
{
    auto const *const entry = cache->find(path);
    if (!entry)
        return std::nullopt;
    ++counters.cacheHits;
    cache->touch(*entry->group, clock->now());
    auto const isStale = ageOf(*entry->group) > config.ttl.count();
    OpenResult result{.snapshot = entry->snapshot, .isStale = isStale, .wasCold = false};
    if (isStale)
        scanBehind(path, horizon(path), Reason::revalidate);
    ensureHorizon(path);
    return result;
}

OpenResult Browser::openStored(DirectorySnapshot snapshot, std::string const &path)
{
    ++counters.diskHits;
    cache->adopt(snapshot, path);
    memory->report(strand, cache);
    // What comes from a disk is stale whatever its age: the program was not there to see it change.
    scanBehind(path, horizon(path), Reason::revalidate);
    ensureHorizon(path);
    return {.snapshot = std::move(snapshot), .isStale = true, .wasCold = false};
}

Task<std::optional<DirectorySnapshot>> Browser::cached(std::string path)
{
    return onOwnStrand([self = shared_from_this(), key = ListingParser::normalize(path)] {
        auto const *const entry = self->cache->find(key);
        return entry ? std::optional(entry->snapshot) : std::nullopt;
    });
}

Task<std::optional<DirectorySnapshot>> Browser::remembered(std::string path)
{
    return onStrand(strand, rememberedHere(shared_from_this(), ListingParser::normalize(path)));
}

Task<std::optional<DirectorySnapshot>> Browser::rememberedHere(std::shared_ptr<Browser> self, std::string path)
{
    if (auto const *const entry = self->cache->find(path))
        co_return entry->snapshot;
    if (!self->kept.hasStore())
        co_return std::nullopt;
    auto const before = self->schedule.forgettings();
    auto stored = co_await self->kept.load(path);
    if (self->schedule.forgettings() != before)
        co_return std::nullopt;
    co_return stored;
}

Task<void> Browser::refresh(std::string path)
{
    return onOwnStrand([self = shared_from_this(), key = ListingParser::normalize(path)] {
        self->scanBehind(key, self->horizon(key), Reason::revalidate);
    });
}

Task<void> Browser::prefetch(std::string path)
{
    return onOwnStrand([self = shared_from_this(), key = ListingParser::normalize(path)] {
        auto const *const entry = self->cache->find(key);
        if (!entry || self->ageOf(*entry->group) > self->config.ttl.count())
            self->scanBehind(key, self->horizon(key), Reason::cursor);
    });
}

Task<void> Browser::invalidate(std::string path)
{
    return onOwnStrand([self = shared_from_this(), key = ListingParser::normalize(path)] {
        self->forget(key, ForgottenPaths::Reach::path);
    });
}

void Browser::forget(std::string const &path, ForgottenPaths::Reach reach)
{
    schedule.forget(path, reach);
    cache->dropGroupOf(path);
    if (reach == ForgottenPaths::Reach::tree) {
        cache->dropGroupsBelow(path);
        kept.forgetTree(path);
    } else {
        kept.forget(path);
    }
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

Task<void> Browser::removePermanently(std::vector<std::string> paths, LockedFolders locked)
{
    for (auto &path : paths)
        path = ListingParser::normalize(path);
    return onStrand(strand,
                    writeHere(
                        shared_from_this(),
                        [paths, locked](FileSystemWriter &writer) { return writer.removePermanently(paths, locked); },
                        paths));
}

Task<void> Browser::removeEmptyFolder(std::string path)
{
    auto where = ListingParser::normalize(path);
    auto write = [where](FileSystemWriter &writer) { return writer.removeEmptyFolder(where); };
    return onStrand(strand, writeHere(shared_from_this(), std::move(write), {where}));
}

Task<void> Browser::moveAll(std::vector<FileSystemWriter::Move> moves, FileSystemWriter::Existing existing)
{
    std::vector<std::string> touched;
    for (auto &move : moves) {
        move = {ListingParser::normalize(move.from), ListingParser::normalize(move.to)};
        touched.push_back(move.from);
        touched.push_back(move.to);
    }
    auto write = [moves, existing](FileSystemWriter &writer) { return writer.moveAll(moves, existing); };
    return onStrand(strand, writeHere(shared_from_this(), std::move(write), std::move(touched)));
}

Task<void> Browser::wroteInto(std::string folder, std::vector<std::string> names)
{
    auto const place = ListingParser::normalize(folder);
    for (auto &name : names)
        name = (place == "/" ? place : place + '/') + name;
    return onOwnStrand([self = shared_from_this(), paths = std::move(names)] { self->forgetWritten(paths); });
}

template <class T>
Task<T> Browser::asking(std::shared_ptr<Browser> self, std::function<Task<T>(FileSystemWriter &)> question)
{
    auto const writer = self->requireWriter();
    co_return co_await question(*writer);
}

Task<FolderFacts> Browser::factsAbout(std::string folder, std::vector<std::string> names)
{
    return asking<FolderFacts>(shared_from_this(),
                               [folder = ListingParser::normalize(folder), names](FileSystemWriter &writer) {
                                   return writer.factsAbout(folder, names);
                               });
}

Task<Survey> Browser::survey(std::string folder, std::vector<std::string> names, Survey::Detail detail)
{
    return asking<Survey>(shared_from_this(),
                          [folder = ListingParser::normalize(folder), names, detail](FileSystemWriter &writer) {
                              return writer.survey(folder, names, detail);
                          });
}

Task<void> Browser::sync(std::string folder)
{
    return asking<void>(shared_from_this(), [folder = ListingParser::normalize(folder)](FileSystemWriter &writer) {
        return writer.sync(folder);
    });
}

std::shared_ptr<FileSystemWriter> Browser::requireWriter() const
{
    auto found = writer();
    if (!found)
        throw FileOperationError::Unsupported("that destination is read-only");
    return found;
}

Task<void> Browser::writeHere(std::shared_ptr<Browser> self, Write write, std::vector<std::string> touched)
{
    auto const writer = self->requireWriter();
    auto outcome = co_await outcomeOf(write(*writer));
    self->forgetWritten(touched);
    outcome.take();
}

void Browser::forgetWritten(std::vector<std::string> const &touched)
{
    using Reach = ForgottenPaths::Reach;
    std::set<std::string> parents;
    for (auto const &path : touched)
        parents.insert(parentOf(path));
    if (touched.size() <= mostForgottenOneByOne) {
        for (auto const &path : touched)
            forget(path, Reach::tree);
    }
    for (auto const &parent : parents)
        forget(parent, touched.size() <= mostForgottenOneByOne ? Reach::path : Reach::tree);
}

Task<void> Browser::invalidateAll()
{
    return onOwnStrand([self = shared_from_this()] {
        self->cache->clear();
        self->depths.clear();
    });
}

Task<UpdateStream<DirectorySnapshot>> Browser::updates()
{
    return onOwnStrand([self = shared_from_this()] { return self->subscribers.subscribe(); });
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
    self->schedule.clear();
    auto const running = std::exchange(self->running, {});
    for (auto const &[number, fetch] : running)
        fetch.cancel();
    self->subscribers.finish();
    // First, since a question to a host is waited for until the session that it went over has ended.
    co_await self->provider->disconnect();
    for (auto const &[number, fetch] : running)
        co_await outcomeOf(fetch.end());
}

Task<Browser::Stats> Browser::stats()
{
    return onOwnStrand([self = shared_from_this()] { return self->counters; });
}

} // namespace tw
