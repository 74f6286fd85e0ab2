#pragma once

#include "TWCore/Archives/ArchiveTools.h"
#include "TWCore/Async/Task.h"

#include <string>

namespace tw {

class EngineRuntime;

/// Finds the archive programs of this machine.
///
/// Threads: may be used from anywhere. Nothing blocks the caller.
/// Lifetime: the engine outlives the task.
namespace LocalArchiveTools {

/// Those in the PATH of this process and in the usual places beside it. They are looked for once in a process; a
/// program that is installed later is found after a restart.
Task<ArchiveTools> ofThisMachine(EngineRuntime &engine);

/// The same in the folders of `searchPath` alone, anew with each call.
Task<ArchiveTools> find(EngineRuntime &engine, std::string searchPath);

} // namespace LocalArchiveTools

} // namespace tw
