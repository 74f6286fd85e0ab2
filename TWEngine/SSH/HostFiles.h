#pragma once

#include "TWCore/Provider/CommandHost.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What changes and measures the files of a host, by commands in its work session.
///
/// A list that does not fit into one command is sent in several, one after the other, up to the first that fails. An
/// empty list sends nothing.
///
/// Cancellation: a command that was sent is waited for.
/// Errors: FileOperationError::Failed if the command fails, with what it printed; what `runCommand` throws for a host
/// that cannot be asked.
namespace tw::HostFiles {

using Host = std::shared_ptr<CommandHost>;
using Paths = std::vector<std::string>;

/// Creates one folder. Fails on a POSIX host if the name exists.
Task<void> makeDirectory(Host host, std::string path);

/// Deletes each path with everything below it. A failure may leave any part deleted.
Task<void> remove(Host host, Paths paths);

/// Renames or moves on the host.
Task<void> rename(Host host, std::string from, std::string to);

/// Copies into the folder `to` on the host, within `limit` for each command.
Task<void> copy(Host host, Paths from, std::string to, std::chrono::duration<double> limit);

/// Bytes of all paths together, as far as the host can read them; see FileCommands::totalSize.
Task<std::int64_t> totalSize(Host host, Paths paths);

} // namespace tw::HostFiles
