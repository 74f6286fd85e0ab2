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

/// Whether files of this place can be edited: it is a host whose files can be read and changed.
bool isPossible(Provider const &place);

/// The file as its host sees it.
Task<EditCommand::State> stateOf(Provider place, std::string path);

struct Fetched {
    EditStaging::Copy copy;
    EditCommand::Way way; ///< that it will go back
};

/// Fills the copy, marks it as a download, and keeps in its record what the file was like before that.
Task<Fetched> fetch(EngineRuntime *engine, Provider place, EditStaging::Copy copy);

struct Result {
    EditCommand::Outcome outcome = {};
    /// Of what was uploaded. Nothing: the copy was saved meanwhile, and nothing was replaced on the host.
    std::optional<EditStaging::Stamp> stamp = {};
};

/// Puts the copy in the place of the file that its record names, if that has the version of the record.
///
/// A small copy goes along in the one command that replaces the file. A large one is uploaded beside it first, over a
/// client of its own. On Windows the file is looked at, and written over in a second step.
/// Cancellation: a command that was sent is waited for.
Task<Result> put(EngineRuntime *engine, Provider place, EditStaging::Copy copy);

} // namespace EditedFile

} // namespace tw
