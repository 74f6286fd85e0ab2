#pragma once

#include "TWCore/Async/Executor.h"
#include "TWEngine/Runtime/IoThread.h"

#include <functional>
#include <memory>

namespace tw {

/// Turns the signals that ask the program to end (SIGTERM, SIGINT, and SIGHUP when its terminal closes) into a call.
///
/// Only the first signal is reported. A later one ends the process at once, in case that the program hangs.
///
/// Threads: `arrived` runs on the executor.
/// Lifetime: the I/O thread outlives it. If it is destroyed on the executor, `arrived` is not called afterwards.
class TerminationSignals {
public:
    TerminationSignals(IoThread &io, std::shared_ptr<Executor> executor, std::function<void(int)> arrived);
    ~TerminationSignals();

    TerminationSignals(TerminationSignals const &) = delete;
    TerminationSignals &operator=(TerminationSignals const &) = delete;

private:
    struct Watch;

    std::shared_ptr<Watch> const watch;
    std::shared_ptr<std::function<void(int)>> const callback;
};

} // namespace tw
