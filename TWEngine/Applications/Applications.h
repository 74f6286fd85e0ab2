#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Applications/Application.h"
#include "TWEngine/Applications/FileNature.h"

#include <string>
#include <vector>

namespace tw {

/// The programs of this machine that open files, and what opens a file if nothing else is said.
///
/// Threads: every operation may be called from anywhere.
/// Cancellation: a program that has been started runs on.
/// Errors: ApplicationError; nothing is thrown where an empty list says it.
class Applications {
public:
    virtual ~Applications() = default;

    /// What the file at `path` is. `modeThere` are the permission bits of the original if it is a copy, which has lost
    /// some. Throws ReadError::NotReadable if it cannot be opened.
    virtual Task<FileNature> natureOf(std::string path, std::uint16_t modeThere = 0) = 0;

    /// The same of a file that is not on this machine. `beginning` has `beginningOfFile` bytes of it, or all.
    virtual Task<FileNature> natureOfBeginning(std::string name, std::string beginning, std::uint16_t mode) = 0;

    /// Those for a content type: the default first, then those that name the type, then those for wider types.
    virtual Task<std::vector<Application>> forType(std::string contentType) = 0;

    /// Those for a file that is not on this machine, by its name alone.
    virtual Task<std::vector<Application>> forName(std::string name) = 0;

    /// All that a user may choose from, by name.
    virtual Task<std::vector<Application>> all() = 0;

    struct Opening {
        std::string path;
        std::string contentType = {};     ///< of the file, for its default program
        std::string application = {};     ///< an identifier; empty: the default program
        std::string activationToken = {}; ///< lets the program's window come to the front; may be empty
    };

    /// Starts a program on a file; returns the program.
    virtual Task<Application> open(Opening opening) = 0;

    /// Runs a program and its arguments in a terminal. `name` is for the user.
    virtual Task<void> runInTerminal(std::string name, std::vector<std::string> command,
                                     std::string activationToken) = 0;

    /// Executes the file itself, which is no document.
    virtual Task<void> run(std::string path, FileNature::Kind kind, std::string activationToken) = 0;
};

} // namespace tw
