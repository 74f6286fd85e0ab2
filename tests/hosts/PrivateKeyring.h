#pragma once

#include "tests/hosts/HostLog.h"
#include "tests/support/TemporaryFolder.h"

#include <memory>
#include <string>
#include <vector>

namespace tw {
class ChildProcess;
class EngineRuntime;
} // namespace tw

namespace tw::test {

/// A session bus for one test, with a real and empty key store.
///
/// The key store starts with the first call to it.
///
/// Threads: for one thread.
/// Lifetime: the runtime outlives it. The destructor ends every process that it has started.
class PrivateKeyring {
public:
    /// The kind of the key store.
    enum class Store {
        real,
        absent,
        mute,             ///< starts, and never answers
        promptIsAnswered, ///< a stand-in, locked, with a password for "box"; the user answers its prompt
        promptStays       ///< the same; nobody answers its prompt
    };

    explicit PrivateKeyring(EngineRuntime &runtime, Store store = Store::real);
    ~PrivateKeyring();

    PrivateKeyring(PrivateKeyring const &) = delete;
    PrivateKeyring &operator=(PrivateKeyring const &) = delete;

    /// The address of the bus.
    std::string const &address() const noexcept { return busAddress; }

    /// Locks the store, as an idle session does. The store finds no program that could show its prompt, and takes the
    /// prompt for dismissed.
    void lock();

    /// How many prompts of a stand-in were shown, and how many of them were dismissed.
    std::size_t promptsShown() { return promptCalls("Shown"); }

    std::size_t promptsDismissed() { return promptCalls("Dismissed"); }

    /// Calls the key store: `arguments` as dbus-send(1) takes them. Returns what it printed.
    std::string call(std::string const &object, std::string const &method, std::vector<std::string> arguments);

private:
    std::string configuration() const;
    std::string storeCommand(Store store) const;
    std::size_t promptCalls(std::string const &what);

    EngineRuntime &engine;
    TemporaryFolder const folder;
    HostLog output;
    std::shared_ptr<ChildProcess> bus;
    std::string busAddress;
};

} // namespace tw::test
