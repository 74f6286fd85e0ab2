#pragma once

#include "TWCore/Provider/FileSystemWriter.h"

/// Changes to files of this machine. All of it blocks: for a worker thread.
///
/// Errors: FileOperationError::Failed with the system's words. Nothing is rolled back.
namespace tw::LocalWrites {

/// Makes the folder, with those above it that are missing. An existing folder is a success.
void makeDirectory(std::string const &path);

/// Fails if there is anything in it.
void removeEmptyFolder(std::string const &path);

/// Throws FileOperationError::NoTrash where there is no Trash for the path.
void moveToTrash(std::string const &path);

enum class [[nodiscard]] Renamed { done, isOnAnotherFileSystem };

/// Renames or moves within one file system, also a folder that its owner cannot write to.
Renamed rename(std::string const &from, std::string const &to, FileSystemWriter::Existing existing);

/// Like `rename` with a target that stays, for a file system that cannot refuse an existing target itself. Looks for a
/// target first, so a target that another program makes in between is replaced.
Renamed renameAfterLooking(std::string const &from, std::string const &to);

/// Ends when what was written on the file system of `folder` is on its disk.
void sync(std::string const &folder);

} // namespace tw::LocalWrites
