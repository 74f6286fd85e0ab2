#pragma once

#include "TWCore/Async/Clock.h"
#include "Tarnwick/Session/SessionState.h"
#include "Tarnwick/Settings/Defaults.h"

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>
#include <string_view>

namespace tw {

/// What was open on each side, and the last place on each connection, kept in the settings between two runs.
///
/// A cursor that moves changes something with each key, so changes are written together, a moment later.
///
/// Threads: main context only.
/// Lifetime: shared; its own task holds it weakly. What `flush` has not written when it is destroyed is lost.
/// Errors: a text that cannot be decoded counts as absent. It is kept under its key with ".broken" behind, since the
/// next change overwrites it, and `note` says so.
class SessionMemory : public std::enable_shared_from_this<SessionMemory> {
public:
    /// The connections whose place is remembered, the ones used last.
    static constexpr std::size_t mostLocations = 64;

    /// From a change until it is written: a crash loses no more.
    static constexpr std::chrono::seconds writingDelay{2};

    struct Collaborators {
        std::shared_ptr<Executor> mainContext;
        std::shared_ptr<Clock> clock;
        Defaults &defaults;                              ///< outlives it
        std::function<void(std::string_view)> note = {}; ///< into the log of the program's life
    };

    /// Reads what is kept.
    explicit SessionMemory(Collaborators collaborators);
    ~SessionMemory();

    SessionMemory(SessionMemory const &) = delete;
    SessionMemory &operator=(SessionMemory const &) = delete;

    /// What was open on both sides, or nothing. No side has more than SideState::mostTabs tabs.
    std::optional<SideStates> const &sides() const noexcept { return openSides; }

    void rememberSides(SideState left, SideState right);

    Locations const &locations() const noexcept { return places; }

    /// The last place on a connection.
    std::optional<Location> location(std::string_view connection) const;

    /// Without a cursor, the one that is remembered stays if the path is the same.
    void remember(std::string const &connection, std::string const &path, std::optional<std::string> cursor);

    /// The last place on a connection is this path no longer, since it is gone.
    void forget(std::string_view connection, std::string_view path);

    /// Writes what has changed into the settings.
    void flush();

private:
    static Task<void> flushLater(std::weak_ptr<SessionMemory> weak, std::shared_ptr<Clock> clock);

    void readSides();
    void readLocations();
    void setAside(char const *key, std::string const &text);
    void changed(bool &what);

    Collaborators const with;
    std::optional<SideStates> openSides;
    Locations places;
    bool haveSidesChanged = false;
    bool haveLocationsChanged = false;
    bool isWritingPlanned = false;
    std::stop_source writing;
};

} // namespace tw
