#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Runtime/SharedTask.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// What the desktop does with the session that the program runs in.
enum class SessionEvent { sleep, wake, powerOff, handedOver, back };

/// The record of the process's life: one line for each event, with neither levels nor anything that the user does. It
/// tells afterwards when the program stopped, and in the middle of what.
///
/// Threads: main context only. Writing blocks, on purpose: it is rare and small, and a line must be there before what
/// comes next can crash.
/// Errors: none. A log that cannot be written is not worth a word.
class LifeLog {
public:
    struct Collaborators {
        std::shared_ptr<Executor> mainContext;
        std::shared_ptr<Clock> clock;
        std::string file; ///< its folder is made, for its user only
    };

    /// Writes nothing yet.
    explicit LifeLog(Collaborators collaborators);

    /// It no longer says that the program is alive.
    ~LifeLog();

    LifeLog(LifeLog const &) = delete;
    LifeLog &operator=(LifeLog const &) = delete;

    /// Once, before anything else is noted. From now on the log says every minute that the program is alive, so that a
    /// crash or a forced end is dated by the last of those lines.
    void begin(std::optional<std::string> const &version);

    /// Appends a line: "03-14 09:26:53  pid 4211  TEXT", in local time.
    void note(std::string_view text);

    void note(SessionEvent event);

private:
    struct Journal;

    void trim();
    static Task<void> keepNotingAlive(std::shared_ptr<Journal> journal);

    std::shared_ptr<Executor> const mainContext;
    std::shared_ptr<Journal> const journal;
    std::optional<SharedTask<void>> heartbeat;
};

/// The later half of a log that has grown too long, or nothing if it has not. `text` is all of it.
///
/// Cut at a line, so that the first one that stays is whole. Nothing for what is no UTF-8 either: it is not ours.
std::optional<std::string> trimmedLog(std::string_view text);

} // namespace tw
