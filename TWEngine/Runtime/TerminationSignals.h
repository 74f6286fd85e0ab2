#pragma once

#include "TWCore/Async/Executor.h"
#include "TWEngine/Runtime/IoThread.h"

#include <functional>
#include <memory>

namespace tw {

/// Turns the wish of the system, or of a shell, that the program ends (SIGTERM, SIGINT) into a call.
///
/// The first such signal is told; a later one ends the process as if nobody listened, for a program that does not get
/// to its end.
///
/// Threads: `arrived` runs on the executor.
/// Lifetime: the I/O thread outlives it. `arrived` is not called any more once this is gone, if it goes on the
/// executor.
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
