#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Model/PollInterval.h"
#include "TWCore/Provider/FolderEvents.h"
#include "TWCore/Shell/ShellDialect.h"
#include "Tarnwick/Panes/Alarm.h"
#include "Tarnwick/Panes/RefreshPace.h"
#include "Tarnwick/Panes/Visibility.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tw {

class Browser;
class CommandHost;

/// Notices that a folder has changed outside the program, and has it read again.
///
/// On this machine by the system's events, and every few seconds for what comes without one. On a host by a probe at
/// intervals, which returns a fingerprint of the folder: over the session that nobody waits for, never more than a
/// small share of the time, and never to a host that is away. A pane that nobody looks at asks nothing and has no
/// timers; `checkNow` makes up for that.
///
/// Threads: main context only.
/// Lifetime: shared; its tasks hold it weakly.
/// Errors: none. A probe that fails is ignored, and so is a folder without events.
class FolderWatcher : public std::enable_shared_from_this<FolderWatcher> {
public:
    struct Ports {
        std::shared_ptr<Executor> mainContext;
        std::shared_ptr<Clock> clock;
        std::function<Visibility()> visibility;
        /// Reads the folder again, and ends when that has been done.
        std::function<Task<void>()> onChanged;
        /// `pace` says something else.
        std::function<void()> onPaceChanged;
    };

    /// What a probe may take: a host that is stuck does not stall the watcher.
    static constexpr std::chrono::seconds probeLimit{10};
    /// Each probe that got stuck may have left a process on the host that waits for a dead disk, so that each makes the
    /// wait for the next twice as long, up to this.
    static constexpr std::chrono::minutes longestWait{10};

    explicit FolderWatcher(Ports ports);
    ~FolderWatcher();

    FolderWatcher(FolderWatcher const &) = delete;
    FolderWatcher &operator=(FolderWatcher const &) = delete;

    PollInterval const &pace() const noexcept { return interval; }

    bool isWatching() const noexcept { return browser != nullptr; }

    /// Watches a folder instead of the one before; does nothing for the same one.
    void watch(std::string const &connection, std::string const &path, std::shared_ptr<Browser> const &source);
    void stop();

    /// Looks now: somebody looks at the pane again.
    void checkNow();

private:
    /// What a probe asks.
    struct Question {
        std::shared_ptr<CommandHost> host;
        std::optional<ShellDialect> dialect;
        std::string path;
        bool reportsFirst = false;
    };

    static Task<void> listen(std::weak_ptr<FolderWatcher> weak, std::shared_ptr<FolderEvents> place, std::string path,
                             std::uint64_t generation);
    static Task<void> read(std::weak_ptr<FolderWatcher> weak, Task<void> reading, std::shared_ptr<Clock> clock,
                           std::uint64_t generation);
    static Task<void> askHost(std::weak_ptr<FolderWatcher> weak, Question question, std::shared_ptr<Clock> clock,
                              std::uint64_t generation);

    bool isLocal() const;
    void listenForEvents();
    void changed();
    void setDebounce();
    void readAgain();
    void readingEnded(RefreshPace::Time began);
    void ring();
    void probe(bool reportsFirst);
    void probed(std::string const &stamp, double cost, bool reportsFirst);
    void scheduleProbe();

    Ports const with;
    PollInterval interval;
    RefreshPace readings;
    std::string connection;
    std::string path;
    std::shared_ptr<Browser> browser; ///< null: nothing is watched
    std::uint64_t generation = 0;     ///< raised by `stop`; what an older one began is ignored

    // Of a folder of this machine.
    bool hasEvents = false; ///< or they are on their way
    std::stop_source events;
    Alarm debounce;
    bool isReading = false;
    bool readsOnceMore = false;

    // Of a folder on a host.
    std::string lastStamp; ///< empty: none yet
    std::optional<ShellDialect> dialect;
    bool isProbing = false;
    int stuckProbes = 0; ///< since the last answer

    Alarm timer; ///< of the next probe, or of the next reading without an event
};

} // namespace tw
