#pragma once

#include "TWEngine/Platform/UserPaths.h"

#include <string>
#include <string_view>

#include <sys/types.h>
#include <unistd.h>

/// Temporary folders for local copies of files that lie elsewhere. They end with the process that made them.
///
/// They lie in one folder of the user's cache that nobody else can enter, and not in /tmp: that is everybody's, and
/// often a file system that takes no marks on files.
///
/// Threads: any. Every function blocks.
/// Errors: FileOperationError::Failed, unless a function says otherwise.
namespace tw::Scratch {

/// Whose folders, and where. Tests have a place of their own.
struct Place {
    std::string base = UserPaths::ofThisUser().scratch;
    uid_t user = ::getuid();
    pid_t process = ::getpid();
};

/// The folder "Tarnwick-<label>-<process>", which is made if it is missing and is private from now on. `label` says
/// what it is for: letters only.
std::string directory(std::string_view label, Place const &place = {});

/// A new folder "tw-<label>-" and eight random digits in the folder of that label, for the files of one operation.
std::string newFolder(std::string_view label, Place const &place = {});

/// An empty file with the mode 0600 in place of what is at `path`, so that what is written to it is never readable by
/// others.
void makeFile(std::string const &path);

/// Marks the file as a download from "ssh://<label>", and takes away its right to be executed. A file system that takes
/// no marks has the file without one, so nothing that is safe may depend on the mark alone.
void markAsFetched(std::string const &path, std::string_view label);

/// True if the file has the mark of a download, of ours or of another program. False if it cannot be asked.
bool isMarkedAsFetched(std::string const &path);

/// Removes the folders of processes that are no more. Best effort.
void remove(Place const &place = {});

/// Removes the folders of one process. Best effort.
void remove(pid_t process, Place const &place = {});

} // namespace tw::Scratch
