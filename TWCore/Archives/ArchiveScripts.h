#pragma once

#include "TWCore/Archives/ArchivePlacing.h"

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

Script place(ArchivePlacing::Any const &placing);

/// Prints a file, and writes one from its input.
Script readFile(std::string path);
Script writeFile(std::string path);

} // namespace tw::ArchiveScripts
