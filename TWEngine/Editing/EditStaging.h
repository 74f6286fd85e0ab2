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
/// Each copy has a folder of its own, so that two files of one name do not meet and an editor's own files lie beside
/// it. A record in that folder says where the file belongs and what was uploaded last: a copy whose process was killed
/// is found again, and nothing that was saved is lost.
///
/// Threads: any. Every function blocks.
/// Errors: FileOperationError::Failed, unless a function says otherwise.
namespace tw::EditStaging {

/// Whose copies, and where. Tests have a place of their own.
struct Place {
    std::string base = UserPaths::ofThisUser().edits;
    uid_t user = ::getuid();
    pid_t process = ::getpid();
};

/// What the system says of a file: another answer, and it was saved.
struct Stamp {
    std::int64_t size = 0;  ///< bytes
    std::int64_t mtime = 0; ///< nanoseconds since 1970-01-01 UTC

    friend bool operator==(Stamp const &, Stamp const &) = default;
};

/// Where a copy belongs.
struct Record {
    std::string connection;
    std::string path;                   ///< on the host
    std::string version = {};           ///< of the file there when it was fetched, or uploaded last
    std::string mode = {};              ///< of the file there, see EditCommand::State
    std::optional<Stamp> uploaded = {}; ///< of the copy when both were the same; nothing before the fetch has ended

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

/// Has the record on the disk.
void keep(Copy const &copy);

/// Removes the copy and its folder. Best effort.
void remove(Copy const &copy);

/// Of the file itself, not of what a link leads to. Nothing if it is not there.
std::optional<Stamp> stampOf(std::string const &path);

/// The copies of processes that are no more which differ from what was uploaded last. They are this process's from now
/// on. Copies that were uploaded are removed. Best effort: what cannot be read stays where it is.
std::vector<Copy> takeOver(Place const &place = {});

} // namespace tw::EditStaging
