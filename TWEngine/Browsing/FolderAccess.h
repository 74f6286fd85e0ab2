#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <functional>
#include <optional>
#include <string>

#include <sys/types.h>

namespace tw {

/// Rights to a folder that its owner does not have, given by this object and taken back by its destructor, wherever the
/// folder is by then.
///
/// A folder cannot be moved into another one without the right to write to it, since ".." is in it too; and nothing in
/// it can be deleted. A link is never followed. Blocks: for a worker thread.
class FolderAccess {
public:
    /// Gives the owner `rights` to the folder `name` of the open folder `parent`. Nothing if it is no folder, if its
    /// owner has them, or if the folder is not this user's.
    static std::optional<FolderAccess> give(int parent, std::string const &name, mode_t rights);

    FolderAccess(FolderAccess &&) = default;
    FolderAccess &operator=(FolderAccess &&) = delete;
    ~FolderAccess();

    /// Leaves the rights as they are now. Returns what they were.
    mode_t keep();

private:
    FolderAccess(FileDescriptor opened, mode_t mode) : folder(std::move(opened)), before(mode) {}

    FileDescriptor folder;
    mode_t before;
};

/// Calls `rename`, which returns what rename(2) returns; again, with the right to write to the folder `from`, if that
/// is what was missing. The result is the error; 0: it is renamed.
int renameWithAccess(std::string const &from, std::function<int()> const &rename);

} // namespace tw
