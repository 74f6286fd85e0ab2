#pragma once

#include "TWEngine/Archives/ArchiveChild.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

namespace tw {

/// Work of an archive tool whose result waits in a staging folder, on this machine or on a host.
namespace ArchiveStaging {

/// A machine, and how its archive tools are called.
struct Machine {
    std::shared_ptr<CommandHost> host; ///< null: this one
    ArchiveTools tools;
};

/// Asks a host for its tools. Throws FileOperationError::Unsupported for a Windows host.
Task<Machine> machineOf(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host);

/// The path of a new staging folder in a folder.
std::string newPath(std::string_view folder);

struct Steps {
    std::string staging; ///< path
    /// Which fill it: the first that succeeds.
    std::vector<ArchiveCommands::Call> attempts;
    /// Gives the result its place, and leaves nothing behind. None: the caller does something with the folder.
    std::optional<ArchivePlacing::Any> place;
    ArchiveChild::Job job;
};

/// Makes the folder, and performs the steps. After a failure the folder is gone.
///
/// Cancellation: ends the tools within 0.2 s and throws Cancelled. The folder is removed behind it.
/// Errors: FileOperationError::Failed; SpawnError; what `runCommand` of a host throws.
Task<void> run(ArchiveWork::Shared work, Machine machine, Steps steps);

/// Makes the folder alone, and places what waits in it. Throw as `run`.
Task<void> makeFolder(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host, std::string staging,
                      ArchiveChild::Job job);
Task<void> place(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host, ArchivePlacing::Any placing,
                 ArchiveChild::Job job);

/// Removes the folder, best effort: if the task is being stopped, behind its back.
Task<void> discard(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host, std::string staging);

} // namespace ArchiveStaging

} // namespace tw
