#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <optional>
#include <string_view>

namespace tw {

/// A Unix socket through which a child process that runs already gets one message, with an open file.
///
/// Threads: one at a time.
/// Lifetime: the child sees the end of its socket when this is destroyed, at the latest with this program.
class FileHandover {
public:
    /// Nothing if there can be no more descriptors.
    static std::optional<FileHandover> create();

    /// The socket that the child inherits.
    FileDescriptor const &childEnd() const noexcept { return theirs; }

    /// Once the child has it: otherwise the end of the child could not be seen from here.
    void closeChildEnd() { theirs = FileDescriptor(); }

    /// Sends `message` and a copy of `file`. False if the child has ended. Does not block.
    bool send(std::string_view message, FileDescriptor const &file) const;

private:
    FileHandover(FileDescriptor own, FileDescriptor child) : ours(std::move(own)), theirs(std::move(child)) {}

    FileDescriptor ours;
    FileDescriptor theirs;
};

} // namespace tw
