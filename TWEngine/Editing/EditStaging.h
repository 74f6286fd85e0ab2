#pragma once

#include "TWEngine/Platform/UserPaths.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>
#include <unistd.h>

/// Copies of remote files while they are edited here. Only the user can read them.
///
/// Each copy has a folder of its own: two files of one name never share a path, and the files that an editor makes lie
/// beside their copy. A record in the folder says where the file belongs and what was uploaded last, so the copy of a
/// killed process is found again and no save is lost.
///
/// Threads: any. Every function blocks.
/// Errors: FileOperationError::Failed, unless a function says otherwise.
namespace tw::EditStaging {

/// Names the time since the machine was started. Empty if the system does not say it.
std::string bootOfThisSystem();

/// Whose copies, and where. Tests have a place of their own.
struct Place {
    std::string base = UserPaths::ofThisUser().edits;
    uid_t user = ::getuid();
    pid_t process = ::getpid();
    std::string boot = bootOfThisSystem();
};

/// What the system says of a file. After a save it is different.
struct Stamp {
    std::int64_t size = 0;  ///< bytes
    std::int64_t mtime = 0; ///< nanoseconds since 1970-01-01 UTC

    friend bool operator==(Stamp const &, Stamp const &) = default;
};

/// Where a copy belongs.
struct Record {
    std::string connection;
    std::string path;                   ///< on the host
    std::string version = {};           ///< of the file on the host, when it was fetched or uploaded last
    std::string mode = {};              ///< of the file on the host, see EditCommand::State
    std::optional<Stamp> uploaded = {}; ///< of the copy when both were equal; nothing before the end of the fetch

    friend bool operator==(Record const &, Record const &) = default;
};

struct Copy {
    std::string folder;
    std::string path;  ///< of the copy
    std::string token; ///< digits that nobody can guess
    Record record;
};

/// An empty file for a copy, and its record.
Copy make(Record record, Place const &place = {});

/// Writes the record to the disk.
void keep(Copy const &copy);

/// Removes the copy and its folder. Best effort.
void remove(Copy const &copy);

/// The stamp of the file itself, not of the target of a link. Nothing if it does not exist.
std::optional<Stamp> stampOf(std::string const &path);

/// A file that gets one byte longer with each editor of the copy that ends, see TerminalEditor.
std::string endMark(Copy const &copy);

std::int64_t endedEditors(Copy const &copy);

/// The copies of dead processes that differ from what was uploaded last. They belong to this process from now on.
/// Copies that were uploaded are removed. Best effort: what cannot be read stays where it is.
std::vector<Copy> takeOver(Place const &place = {});

} // namespace tw::EditStaging
