#include "Tarnwick/Connections/ConnectionRegistry.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWEngine/Browsing/LocalProvider.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/SharedTask.h"
#include "TWEngine/SSH/HostAccess.h"
#include "TWEngine/Store/ListingStore.h"
#include "Tarnwick/Connections/SavedHosts.h"
#include "Tarnwick/Connections/StoreOpening.h"

#include <functional>
#include <map>

namespace tw {

namespace {

constexpr auto localKey = "local";

using Store = StoreOpening::Store;
using BrowserRef = std::shared_ptr<Browser>;
using Memory = std::shared_ptr<ListingBudget>;

BrowserRef makeBrowser(EngineRuntime &engine, Memory memory, std::shared_ptr<FileSystemProvider> provider, Store store)
{
    return std::make_shared<Browser>(std::move(provider),
                                     Browser::Collaborators{.strand = engine.makeStrand(),
                                                            .clock = engine.clock(),
                                                            .store = std::move(store),
                                                            .memory = std::move(memory)},
                                     Browser::Config{});
}

std::string keyOf(std::string const &host)
{
    return "ssh:" + host;
}

/// Counts a host as used for as long as it lives. It holds the Browser that is handed out.
class HostUse {
public:
    HostUse(BrowserRef used, std::function<void()> atTheEnd) : browser(std::move(used)), end(std::move(atTheEnd)) {}

    ~HostUse() { end(); }

    HostUse(HostUse const &) = delete;
    HostUse &operator=(HostUse const &) = delete;

    BrowserRef const browser;

private:
    std::function<void()> const end;
};

} // namespace

/// Shared with the calls that wait, which may outlive the registry. On the main context.
struct ConnectionRegistry::Shared {
    /// A host that is up, or on its way.
    struct Attempt {
        BrowserRef browser;
        std::optional<SharedTask<void>> task;                    ///< the way, with its failure
        std::shared_ptr<int> waiting = std::make_shared<int>(0); ///< the callers that wait for its end

        /// Counts a caller for as long as it lives. The last caller ends the attempt.
        class Caller;
    };

    enum class Way { quiet, asking };

    Collaborators with;
    Memory memory = std::make_shared<ListingBudget>(with.engine.makeStrand()); ///< of all Browsers together
    std::map<std::string, BrowserRef> browsers = {};
    std::map<std::string, Attempt> connecting = {};
    /// Every Browser of a host that somebody still has, up or not: there is never a second one for a host.
    std::map<std::string, std::weak_ptr<Browser>> known = {};

    /// By whom each host is used, and the wait for the end of its connection since nobody uses it.
    struct Use {
        std::weak_ptr<HostUse> held;
        std::stop_source waiting = std::stop_source(std::nostopstate);
    };

    std::map<std::string, Use> uses = {};
    std::shared_ptr<StoreOpening> store = {}; ///< null: listings are not kept
    SavedHosts saved{with.mainContext, with.engine.workers(), with.sshConfig};

    static Task<BrowserRef> ssh(std::shared_ptr<Shared> self, std::string host);
    static Task<BrowserRef> logIn(std::shared_ptr<Shared> self, std::string host);
    static Task<BrowserRef> reach(std::shared_ptr<Shared> self, std::string host);
    static Task<KnownConnection> hostAsItIs(std::shared_ptr<Shared> self, std::string host);
    bool isClosing = false; ///< nothing is begun any more

    static Task<void> giveUpAttempts(std::shared_ptr<Shared> self);
    static Task<void> shutdownAll(std::shared_ptr<Shared> self);

    /// The host as it is, with a new attempt if it is neither up nor on its way.
    static Task<Attempt> attempt(std::shared_ptr<Shared> self, std::string host, Way way);
    static Task<void> connect(std::shared_ptr<Shared> self, std::string key, Attempt attempt, Way way);
    void forget(std::string const &key, std::shared_ptr<int> const &waiting);

    BrowserRef browserOf(std::string const &host, Store openStore);

    /// The Browser as it is handed out.
    static BrowserRef lend(std::shared_ptr<Shared> const &self, std::string const &key, BrowserRef const &browser);
    void startWaiting(std::shared_ptr<Shared> const &self, std::string const &key);
    static Task<void> disconnectUnused(std::weak_ptr<Shared> weak, std::shared_ptr<Clock> clock, std::string key);
};

class ConnectionRegistry::Shared::Attempt::Caller {
public:
    Caller(std::shared_ptr<Shared> registry, std::string ofHost, Attempt joined)
        : self(std::move(registry)), key(std::move(ofHost)), attempt(std::move(joined))
    {
        ++*attempt.waiting;
    }

    ~Caller()
    {
        if (--*attempt.waiting > 0 || !attempt.task || attempt.task->isDone())
            return;
        attempt.task->cancel();
        self->forget(key, attempt.waiting); // the next caller joins no attempt that is ending
    }

    Caller(Caller const &) = delete;
    Caller &operator=(Caller const &) = delete;

private:
    std::shared_ptr<Shared> const self;
    std::string const key;
    Attempt const attempt;
};

/// Ends the entry of an attempt that has ended. Another may have taken its place.
void ConnectionRegistry::Shared::forget(std::string const &key, std::shared_ptr<int> const &waiting)
{
    if (auto const entry = connecting.find(key); entry != connecting.end() && entry->second.waiting == waiting)
        connecting.erase(entry);
}

ConnectionRegistry::ConnectionRegistry(Collaborators collaborators)
    : shared(std::make_shared<Shared>(std::move(collaborators)))
{
    auto const &with = shared->with;
    if (!with.cacheDirectory.empty())
        shared->store = std::make_shared<StoreOpening>(with.engine, with.mainContext, with.cacheDirectory);
}

ConnectionRegistry::~ConnectionRegistry()
{
    for (auto const &[key, attempt] : shared->connecting)
        attempt.task->cancel();
    shared->store.reset(); // ends the trimming
    for (auto &[key, use] : shared->uses)
        use.waiting.request_stop();
}

std::shared_ptr<Browser> ConnectionRegistry::local()
{
    auto &browser = shared->browsers[localKey];
    if (!browser) {
        auto &engine = shared->with.engine;
        browser = makeBrowser(engine, shared->memory, std::make_shared<LocalProvider>(engine), nullptr);
    }
    return browser;
}

Task<BrowserRef> ConnectionRegistry::ssh(std::string host)
{
    return Shared::ssh(shared, std::move(host));
}

Task<BrowserRef> ConnectionRegistry::Shared::ssh(std::shared_ptr<Shared> self, std::string host)
{
    auto const begun = co_await attempt(self, host, Way::quiet);
    Attempt::Caller const caller(self, keyOf(host), begun);
    auto const lent = lend(self, keyOf(host), begun.browser);
    if (begun.task)
        co_await begun.task->wait();
    co_return lent;
}

Task<BrowserRef> ConnectionRegistry::logIn(std::string host)
{
    return Shared::logIn(shared, std::move(host));
}

Task<BrowserRef> ConnectionRegistry::Shared::logIn(std::shared_ptr<Shared> self, std::string host)
{
    auto const begun = co_await attempt(self, host, Way::asking);
    Attempt::Caller const caller(self, keyOf(host), begun);
    auto const lent = lend(self, keyOf(host), begun.browser);
    // An attempt that was under way may not ask the user. This one may, and its callers join it.
    auto const access = std::dynamic_pointer_cast<HostAccess>(begun.browser->providerRef());
    co_await access->logIn();
    if (begun.task)
        co_await begun.task->wait();
    co_return lent;
}

Task<BrowserRef> ConnectionRegistry::reach(std::string host)
{
    return Shared::reach(shared, std::move(host));
}

Task<BrowserRef> ConnectionRegistry::Shared::reach(std::shared_ptr<Shared> self, std::string host)
{
    auto const begun = co_await attempt(self, host, Way::quiet);
    co_return lend(self, keyOf(host), begun.browser);
}

Task<KnownConnection> ConnectionRegistry::known(std::string host)
{
    return Shared::hostAsItIs(shared, std::move(host));
}

Task<KnownConnection> ConnectionRegistry::Shared::hostAsItIs(std::shared_ptr<Shared> self, std::string host)
{
    Store opened;
    if (auto const store = self->store)
        opened = co_await store->opened();
    if (self->isClosing)
        throw Cancelled();
    auto const up = self->browsers.find(keyOf(host));
    if (up != self->browsers.end())
        co_return KnownConnection{lend(self, keyOf(host), up->second), true};
    co_return KnownConnection{self->browserOf(host, opened), false};
}

Task<ConnectionRegistry::Shared::Attempt> ConnectionRegistry::Shared::attempt(std::shared_ptr<Shared> self,
                                                                              std::string host, Way way)
{
    Store opened;
    if (auto const store = self->store)
        opened = co_await store->opened();
    if (self->isClosing)
        throw Cancelled();
    auto const key = keyOf(host);
    if (auto const up = self->browsers.find(key); up != self->browsers.end())
        co_return Attempt{up->second, {}};
    if (auto const underWay = self->connecting.find(key); underWay != self->connecting.end())
        co_return underWay->second;
    auto const browser = self->browserOf(host, opened);
    Attempt begun{.browser = browser, .task = {}};
    begun.task = SharedTask<void>::start(self->with.mainContext, connect(self, key, begun, way));
    self->connecting.emplace(key, begun);
    co_return begun;
}

BrowserRef ConnectionRegistry::Shared::lend(std::shared_ptr<Shared> const &self, std::string const &key,
                                            BrowserRef const &browser)
{
    auto &use = self->uses[key];
    auto held = use.held.lock();
    if (!held || held->browser != browser) {
        // The last holder may let go on any thread.
        held = std::make_shared<HostUse>(browser, [weak = std::weak_ptr(self), main = self->with.mainContext, key] {
            main->post([weak, key] {
                if (auto const registry = weak.lock())
                    registry->startWaiting(registry, key);
            });
        });
        use.held = held;
    }
    use.waiting.request_stop();
    return {held, browser.get()};
}

void ConnectionRegistry::Shared::startWaiting(std::shared_ptr<Shared> const &self, std::string const &key)
{
    auto const use = uses.find(key);
    if (use == uses.end() || !use->second.held.expired())
        return;
    use->second.waiting.request_stop();
    if (!browsers.contains(key)) {
        uses.erase(use);
        return;
    }
    use->second.waiting = std::stop_source();
    auto const clock = with.clock ? with.clock : with.engine.clock();
    spawn({with.mainContext, use->second.waiting.get_token()}, disconnectUnused(self, clock, key));
}

Task<void> ConnectionRegistry::Shared::disconnectUnused(std::weak_ptr<Shared> weak, std::shared_ptr<Clock> clock,
                                                        std::string key)
{
    co_await clock->sleep(unusedLimit);
    auto self = weak.lock();
    if (!self || !self->browsers.contains(key))
        co_return;
    auto const host = self->browsers.at(key)->host();
    self.reset();
    if (!host)
        co_return;
    auto const comesBack = co_await host->logsInByItself();
    self = weak.lock();
    if (!self)
        co_return;
    auto const use = self->uses.find(key);
    // A caller may have come since the end of the sleep.
    if (use == self->uses.end() || !use->second.held.expired())
        co_return;
    self->uses.erase(use);
    self.reset();
    if (comesBack)
        co_await outcomeOf(host->disconnect().withStop({}));
}

/// If the first caller is cancelled, the others still wait for this.
Task<void> ConnectionRegistry::Shared::connect(std::shared_ptr<Shared> self, std::string key, Attempt attempt, Way way)
{
    auto const access = std::dynamic_pointer_cast<HostAccess>(attempt.browser->providerRef());
    auto outcome = co_await outcomeOf(way == Way::asking ? access->logIn() : attempt.browser->connect());
    if (outcome.value) {
        self->browsers.emplace(key, attempt.browser);
        // Those who asked may have gone meanwhile.
        self->uses.try_emplace(key);
        self->startWaiting(self, key);
    }
    self->forget(key, attempt.waiting);
    outcome.take();
}

BrowserRef ConnectionRegistry::Shared::browserOf(std::string const &host, Store openStore)
{
    if (auto const entry = known.find(keyOf(host)); entry != known.end()) {
        if (auto browser = entry->second.lock())
            return browser; // somebody still looks at what it remembers of a host that could not be reached
    }
    auto browser =
        makeBrowser(with.engine, memory,
                    std::make_shared<SSHProvider>(SSHProvider::Collaborators{.engine = with.engine,
                                                                             .sshProgram = with.sshProgram,
                                                                             .sockets = with.sockets,
                                                                             .savedPasswords = with.savedPasswords,
                                                                             .loginDesk = with.logins},
                                                  host),
                    std::move(openStore));
    std::erase_if(known, [](auto const &each) { return each.second.expired(); });
    known[keyOf(host)] = browser;
    return browser;
}

Task<std::vector<std::string>> ConnectionRegistry::hosts()
{
    return shared->saved.names();
}

Task<void> ConnectionRegistry::giveUpAttempts()
{
    return Shared::giveUpAttempts(shared);
}

Task<void> ConnectionRegistry::Shared::giveUpAttempts(std::shared_ptr<Shared> self)
{
    self->isClosing = true;
    auto const attempts = self->connecting;
    for (auto const &[key, attempt] : attempts)
        attempt.task->cancel();
    for (auto const &[key, attempt] : attempts) {
        co_await outcomeOf(attempt.task->wait());
        // A question that waited for the attempt would begin the next.
        co_await outcomeOf(attempt.browser->providerRef()->disconnect());
    }
}

Task<void> ConnectionRegistry::shutdownAll()
{
    return Shared::shutdownAll(shared);
}

Task<void> ConnectionRegistry::Shared::shutdownAll(std::shared_ptr<Shared> self)
{
    for (auto &[key, use] : std::exchange(self->uses, {}))
        use.waiting.request_stop();
    for (auto const &[key, browser] : std::exchange(self->browsers, {}))
        co_await outcomeOf(browser->shutdown());
    // Those that never came up, and that somebody has looked at.
    for (auto const &[key, weak] : std::exchange(self->known, {})) {
        auto const browser = weak.lock();
        if (browser && !self->connecting.contains(key))
            co_await outcomeOf(browser->shutdown());
    }
    if (auto const store = std::exchange(self->store, {}))
        co_await store->close();
    // Last: a home that hangs is to keep nothing else from being closed.
    co_await self->saved.finish();
}

} // namespace tw
