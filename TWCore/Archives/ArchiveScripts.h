#pragma once

#include <span>
#include <string>
#include <vector>

/// What is done beside the archive tools, for a POSIX shell here or on a host: files wait in a folder of their own, the
/// staging folder, until all of them are there, and then get their place in one move.
namespace tw::ArchiveScripts {

/// A script, and what it gets as its arguments.
struct Script {
    std::string text;
    std::vector<std::string> arguments;

    /// For a shell that runs more than this.
    std::string inSubshell() const;
};

/// Creates a folder that nobody else can look into.
Script makeStaging(std::string staging);

/// Removes it with all that is left in it, whatever permissions an archive has given to that.
Script removeStaging(std::string staging);

/// Moves what was unpacked to `target`, which must not be there yet: the staging folder itself, or the one folder in it
/// if that has the name `stem`. If root has unpacked it, devices and the right of files to run as their owner go
/// before.
Script placeAll(std::string staging, std::string target, std::string stem);

/// Moves members, by their paths below the staging folder, into the folder `target` under their last names. A file
/// takes the place of a file, and a folder is merged with a folder.
Script placeMembers(std::string staging, std::string target, std::span<std::string const> members);

/// Gives a file in the staging folder its place, where it may replace another file but no folder.
Script placeFile(std::string file, std::string target);

/// Prints a file, and writes one from its input.
Script readFile(std::string path);
Script writeFile(std::string path);

} // namespace tw::ArchiveScripts
