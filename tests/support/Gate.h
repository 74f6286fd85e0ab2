#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {

/// Blocks a command of a host on this machine until the test opens the gate, or destroys it.
class Gate {
public:
    Gate()
    {
        if (::mkfifo(path.c_str(), S_IRUSR | S_IWUSR) != 0)
            throw std::system_error(errno, std::system_category(), path);
        // Opened for reading and writing: opening a FIFO for one of them waits for the other side.
        writeEnd = FileDescriptor(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
    }

    /// A command for a POSIX shell that ends when the gate is opened.
    std::string waiting() const { return "head -n 1 <'" + path + "' >/dev/null"; }

    /// Lets one command pass, now or later.
    void open() const
    {
        if (::write(writeEnd.get(), "\n", 1) != 1)
            throw std::system_error(errno, std::system_category(), path);
    }

private:
    TemporaryFolder const folder;
    std::string const path = folder.path("gate");
    FileDescriptor writeEnd;
};

} // namespace tw::test
