#pragma once

#include "TWCore/Async/Task.h"
#include "TWCore/Provider/FileSystemProvider.h"
#include "TWCore/Shell/EditCommand.h"
#include "TWEngine/Editing/EditStaging.h"

#include <memory>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// Brings a file of a host here to be edited, and back.
///
/// Lifetime: the engine outlives the tasks.
/// Errors: what the provider throws; FileOperationError::Failed.
namespace EditedFile {

using Provider = std::shared_ptr<FileSystemProvider>;

/// True for a host whose files can be read and changed.
bool isPossible(Provider const &place);

/// The file as its host sees it.
Task<EditCommand::State> stateOf(Provider place, std::string path);

struct Fetched {
    EditStaging::Copy copy;
    EditCommand::Way way; ///< by which it will be put back
};

/// Fills the copy, marks it as a download, and keeps in its record the version that the file had before the download.
Task<Fetched> fetch(EngineRuntime *engine, Provider place, EditStaging::Copy copy);

struct Result {
    EditCommand::Outcome outcome = {};
    /// Of the content that was uploaded. Nothing if the copy was saved during the upload: then nothing was replaced.
    std::optional<EditStaging::Stamp> stamp = {};
};

/// Puts the copy in the place of the file that its record names, if the file has the version of the record.
///
/// A small copy is part of the one command that replaces the file. A large one, and every one for a Windows host, is
/// uploaded beside the file first, over an ssh client of its own.
/// Cancellation: a command that was sent is waited for.
Task<Result> put(EngineRuntime *engine, Provider place, EditStaging::Copy copy);

} // namespace EditedFile

} // namespace tw
