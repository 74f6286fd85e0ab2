#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <optional>
#include <string>

namespace tw {

/// The folder that the database of listings lies in: for its user's eyes only, and never emptied under another process.
///
/// A lock on the folder (flock(2), which the system lets go of with the process) says who uses it. Whoever gets it for
/// itself alone may replace the database; all others share it. Removing a database that somebody has open would be
/// worse than a damaged one: that process removes the files of its successor when it closes its own.
///
/// Threads: one at a time. All operations block, for a fraction of a second at most.
/// Lifetime: holds the lock until it goes; the database is closed before.
class StoreFolder {
public:
    /// Makes the folder, and those that lead to it, if need be. Absent if there is none to be had.
    static std::optional<StoreFolder> open(std::string const &directory);

    /// Without a symbolic link in it.
    std::string databasePath() const;

    /// Sees to it that the file of the database is there, and that nobody but the user may read it or what SQLite puts
    /// beside it, which takes its mode from it. False if what is there is no plain file: a link could lead to a file of
    /// somebody else's, and a folder is none.
    bool preparePrivateFile() const;

    /// Whether no other process has the folder open, nor can open it before `share`.
    bool isAlone() const noexcept { return use == Use::alone; }

    /// Lets others in.
    void share();

    /// Asks to be alone, without waiting. On a refusal the lock is lost: the database must be closed before.
    bool tryToBeAlone();

    /// Removes the database and what belongs to it. Only for one who is alone.
    void removeDatabase() const;

private:
    enum class Use {
        alone,
        shared,
        unlocked ///< the file system knows no locks: it works, and nothing is ever replaced
    };

    StoreFolder(std::string path, FileDescriptor folder) : root(std::move(path)), descriptor(std::move(folder)) {}

    bool lock();
    bool tryToShare();

    std::string root;
    FileDescriptor descriptor;
    Use use = Use::unlocked;
};

} // namespace tw
