#pragma once

#include "TWCore/Async/ChildTask.h"
#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Transfer/KeptWords.h"

#include <chrono>

namespace tw {

class EngineRuntime;

/// A program of a transfer that runs, and what it writes to its standard error.
///
/// Threads: those of the strand that has started it.
class TransferChild {
public:
    using Shared = std::shared_ptr<TransferChild>;

    enum class AtFirstLine {
        goOn,
        end ///< the program is asked to end as soon as it has written a line to its standard error
    };

    /// Starts `command` and reads its standard error from then on. Throws SpawnError.
    static Task<Shared> start(EngineRuntime &engine, ChildCommand command, AtFirstLine atFirstLine = AtFirstLine::goOn);

    ChildProcess const &process() const noexcept { return *child; }

    /// Waits for its end and for its last words.
    static Task<ExitStatus> end(Shared self);

    /// Lets it end by itself for as long, then asks it, then kills it. Ends when it is gone, or soon after the kill if
    /// a dead disk holds it: the status is then the one that it will have. Takes no stop.
    static Task<ExitStatus> endSoon(Shared self, std::chrono::milliseconds patience);

    std::string words() const { return kept.text(); }

    TransferChild(EngineRuntime &engine, std::shared_ptr<ChildProcess> child);

private:
    static Task<void> hear(Shared self, AtFirstLine atFirstLine);

    // Constant after construction.
    EngineRuntime &engine;
    std::shared_ptr<ChildProcess> const child;

    KeptWords kept;
    std::optional<ChildTask<void>> hearing;
};

} // namespace tw
