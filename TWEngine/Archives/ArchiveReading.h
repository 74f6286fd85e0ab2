#pragma once

#include "TWCore/Archives/ArchiveMembers.h"
#include "TWCore/Async/Task.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

#include <chrono>
#include <cstddef>
#include <string>

namespace tw {

class EngineRuntime;

/// Lists the members of an archive with the tools of the machine that holds it.
namespace ArchiveReading {

/// A listing of some ten million members. More is given up, since all of it is kept in memory.
inline constexpr std::size_t mostBytes = std::size_t{1} << 30U;

/// How long a host may take; it may have to unpack all of the archive for it.
inline constexpr std::chrono::seconds limitOnHosts{300};

/// The members of the archive at `path`, which lies on the machine of `place`.
///
/// An archive of a host that is damaged is listed up to the damage.
///
/// Lifetime: the engine outlives the task.
/// Cancellation: the tool ends. On a host a command that was sent goes on, and nobody waits for it.
/// Errors: FileOperationError; SpawnError if a program of this machine cannot be started; what the host throws.
Task<ArchiveMembers> read(EngineRuntime &engine, std::string path, TransferEndpoint place);

} // namespace ArchiveReading

} // namespace tw
