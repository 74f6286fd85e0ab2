#pragma once

#include "TWEngine/Runtime/SharedTask.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tw {

class WorkerPool;

/// The hosts in the user's ssh configuration, which is read anew for each question.
///
/// One reading runs at a time, and the questions that come meanwhile share the next: on a home that hangs, each would
/// take a worker for itself. What is changed while the file is being read may not be seen.
///
/// Threads: main context only.
/// Lifetime: `workers` outlives it; a reading under way does not need it.
class SavedHosts {
public:
    using Names = std::vector<std::string>;

    /// `path` of the configuration; empty: this user's.
    SavedHosts(std::shared_ptr<Executor> mainContext, WorkerPool const &workers, std::string path);

    /// In the order of the file.
    Task<Names> names();

    /// Waits for the end of the reading under way, if there is one.
    Task<void> finish() const;

private:
    using Reading = SharedTask<Names>;

    static Task<Names> read(std::optional<Reading> before, std::shared_ptr<bool> hasBegun, WorkerPool const *workers,
                            std::string path);
    static Task<void> endOf(std::optional<Reading> reading);

    // Constant after construction.
    std::shared_ptr<Executor> const mainContext;
    WorkerPool const &workers;
    std::string const path;

    std::optional<Reading> last;
    std::shared_ptr<bool> lastHasBegun;
};

} // namespace tw
