#pragma once

#include "TWCore/Archives/ArchiveMembers.h"
#include "TWCore/Async/Task.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// Lists the members of an archive with the tools of the machine that holds it.
namespace ArchiveReading {

/// A listing of some ten million members. More is given up, since all of it is kept in memory.
inline constexpr std::size_t mostBytes = std::size_t{1} << 30U;

/// How long a host may take; it may have to unpack all of the archive for it.
inline constexpr std::chrono::seconds limitOnHosts{300};

/// How an archive whose names are encrypted is read.
struct Access {
    std::optional<std::string> password = {};
    std::string ssh = {}; ///< the client that takes a password to a host
};

/// The members of the archive at `file`.
///
/// An archive of a host that is damaged is listed up to the damage.
///
/// Lifetime: the engine outlives the task.
/// Cancellation: the tool ends, also on a POSIX host.
/// Errors: FileOperationError, see ArchiveFailure; SpawnError if a program of this machine cannot be started; what the
/// host throws.
Task<ArchiveMembers> read(EngineRuntime &engine, TransferEndpoint file, Access access = {});

} // namespace ArchiveReading

} // namespace tw
