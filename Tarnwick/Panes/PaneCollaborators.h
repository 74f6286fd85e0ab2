#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Async/Executor.h"
#include "Tarnwick/Connections/OpenArchive.h"

#include <memory>

namespace tw {

class Defaults;

/// What every pane is made with.
struct PaneCollaborators {
    std::shared_ptr<Executor> mainContext;
    std::shared_ptr<Clock> clock;
    Defaults &defaults;                          ///< outlives the pane
    std::shared_ptr<Executor> workers = nullptr; ///< null: work that takes a core is done on the main context
    ArchiveOpener openArchive = {};              ///< empty: an archive is a file as any other
};

} // namespace tw
