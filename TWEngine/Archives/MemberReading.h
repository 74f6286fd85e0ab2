#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// Reads the content of one member of an archive, by the tools of the machine that holds the archive.
namespace MemberReading {

struct Member {
    TransferEndpoint archive; ///< the file
    std::string name;         ///< as the archive writes it
    std::optional<std::string> password = {};
};

/// Passes the content to `taker`, piece by piece. An exception of `taker` ends the reading and reaches the caller.
/// `sshProgram` is the client for archives of a host; on a Windows host nothing can be read.
///
/// Lifetime: the engine outlives the task.
/// Cancellation: the tool ends.
/// Errors: FileOperationError, see ArchiveFailure; SpawnError, and what the host throws.
Task<void> read(EngineRuntime &engine, std::string sshProgram, Member member, OneShotCommand::Taker taker);

} // namespace MemberReading

} // namespace tw
