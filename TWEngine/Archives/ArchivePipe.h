#pragma once

#include "TWEngine/Archives/ArchiveStaging.h"

namespace tw {

/// An archive as a stream between two machines, through this one.
namespace ArchivePipe {

/// A program at one end, on its machine.
struct End {
    std::shared_ptr<CommandHost> host; ///< null: this machine
    ChildCommand here = {};            ///< for this machine
    std::string there = {};            ///< for a host
};

End endOf(ArchiveStaging::Machine const &machine, ArchiveCommands::Call const &call);
End endOf(std::shared_ptr<CommandHost> host, ArchiveScripts::Script const &script);

/// Lets the producer's output pass into the consumer's input, to its end.
///
/// Cancellation: ends both within 0.2 s, and throws Cancelled.
/// Errors: FileOperationError::Failed with the operation "read" or "write" on `label`; SpawnError.
Task<void> run(ArchiveWork::Shared work, End producer, End consumer, std::string label,
               std::optional<std::int64_t> total = {});

} // namespace ArchivePipe

} // namespace tw
