#pragma once

#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Provider/FileSystemProvider.h"
#include "TWCore/Provider/FolderFacts.h"
#include "TWCore/Provider/LockedFolders.h"
#include "TWCore/Provider/Survey.h"

#include <vector>

namespace tw {

/// A place whose files can be changed.
class FileSystemWriter : public virtual FileSystemProvider {
public:
    /// True if `remove` moves files to a place from which the user can restore them.
    virtual bool deleteIsReversible() const = 0;

    /// Creates one directory.
    virtual Task<void> makeDirectory(std::string path) = 0;

    /// Deletes each of the paths. (`delete` is a word of the language.)
    ///
    /// Cancellation: ends the work before its next file, where the place can; what was deleted stays deleted.
    virtual Task<void> remove(std::vector<std::string> paths) = 0;

    /// Renames, or moves within this provider. An existing target is an error, and stays as it is.
    virtual Task<void> rename(std::string from, std::string to) = 0;

    struct Move {
        std::string from;
        std::string to;
    };

    /// What a move does to a file that has its new name. A folder always stays, and that is an error.
    enum class Existing {
        stays,     ///< which is an error
        isReplaced ///< by a file: the old one or the new one is there at any moment, unless a host copies
    };

    /// Moves within this provider, in order and in as few requests as possible. Throws the first failure; earlier moves
    /// stay done, and on a host some of the next ones may be done too. What leads to another file system is
    /// FileOperationError::OtherFileSystem; some hosts copy instead.
    virtual Task<void> moveAll(std::vector<Move> moves, Existing existing) = 0;

    /// Deletes each of the paths, and nothing can bring them back. A Windows host takes all folders for `stay`.
    virtual Task<void> removePermanently(std::vector<std::string> paths, LockedFolders locked) = 0;

    /// Deletes a folder in which there is nothing. Otherwise it fails, and everything stays.
    virtual Task<void> removeEmptyFolder(std::string path) = 0;

    /// What is in the way of writing `names` into `folder`.
    virtual Task<FolderFacts> factsAbout(std::string folder, std::vector<std::string> names) = 0;

    /// What is below `names` in `folder`.
    virtual Task<Survey> survey(std::string folder, std::vector<std::string> names, Survey::Detail detail) = 0;

    /// Ends when what was written in `folder` is on its disk.
    virtual Task<void> sync(std::string folder) = 0;
};

} // namespace tw
