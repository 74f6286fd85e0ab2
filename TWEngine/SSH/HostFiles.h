#pragma once

#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Provider/FileSystemWriter.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tw {

class EngineRuntime;

} // namespace tw

/// What changes and measures the files of a host, by commands in its sessions for work.
///
/// A list that does not fit into one request is sent in several, one after the other, up to the first that fails. An
/// empty list sends nothing.
///
/// If the connection is lost during a change, the host is asked afterwards whether it was made: the change succeeds, or
/// fails with how far it came. Only if the host cannot be asked either, OutcomeUnknown is thrown.
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
///
/// Cancellation: on a POSIX host as HostWork::run. A question in the interactive session is answered afterwards.
Task<void> remove(EngineRuntime &engine, Host host, Paths paths, LockedFolders locked = LockedFolders::stay);

/// Deletes one folder, and fails if there is anything in it.
Task<void> removeEmptyFolder(Host host, std::string path);

/// Renames or moves on the host, see MoveCommand.
Task<void> moveAll(Host host, std::vector<FileSystemWriter::Move> moves, FileSystemWriter::Existing existing);

/// What is in the way of writing `names` into `folder`, asked in the interactive session: a person waits for it.
Task<FolderFacts> factsAbout(Host host, std::string folder, std::vector<std::string> names);

/// Copies into the folder `to` on the host.
Task<void> copy(Host host, Paths from, std::string to);

/// Ends when what was written in `folder` is on its disk.
Task<void> sync(Host host, std::string folder);

/// Bytes of all paths together, as far as the host can read them; see FileCommands::totalSize.
Task<std::int64_t> totalSize(Host host, Paths paths);

} // namespace tw::HostFiles
