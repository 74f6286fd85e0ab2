#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <string>
#include <system_error>

#include <fcntl.h>
#include <signal.h>

namespace tw::test {

/// A file that other programs wait to open until the test releases it, or destroys this. So a program that copies it
/// stands still in the middle of its work, whatever program it is.
class HeldFile {
public:
    explicit HeldFile(std::string const &path) : file(::open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        // By default the process that holds a lease is ended when another one opens the file. This signal is ignored.
        if (!file || ::fcntl(file.get(), F_SETSIG, SIGURG) != 0 || ::fcntl(file.get(), F_SETLEASE, F_WRLCK) != 0)
            throw std::system_error(errno, std::system_category(), path);
    }

    /// A program waits for it.
    bool isWanted() const { return ::fcntl(file.get(), F_GETLEASE) != F_WRLCK; }

private:
    FileDescriptor const file;
};

} // namespace tw::test
