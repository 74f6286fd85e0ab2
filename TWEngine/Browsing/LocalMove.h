#pragma once

#include "TWCore/Provider/FileSystemWriter.h"

namespace tw {

class EngineRuntime;

/// Moves a path of this machine to another file system: copies it with `cp -a` into a folder of its own beside the
/// target, compares the copy with the original, gives it its name, has the target's file system write it to its disk,
/// and deletes the original last.
///
/// Until the end the original is whole; the folder ".tw-paste-..." beside the target is what is left if this program is
/// killed. A target that exists is an error, and stays as it is.
/// Lifetime: the engine outlives the task.
/// Cancellation: ends the copying, and deletes what was copied.
/// Errors: FileOperationError::Failed with the path `move.from`, and with why the original was kept: the copy is not
/// whole, or the original has changed meanwhile.
Task<void> moveToOtherFileSystem(EngineRuntime &engine, FileSystemWriter::Move move);

} // namespace tw
