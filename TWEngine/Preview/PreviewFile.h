#pragma once

#include "TWCore/Model/Entry.h"
#include "TWEngine/Runtime/FileDescriptor.h"

#include <cstdint>
#include <string>

namespace tw {

/// A file of this machine that is to be shown, open for reading, with its beginning.
struct PreviewFile {
    /// Enough to know a file by, and more text than fits on a screen. Of a file on a host it is one answer.
    static constexpr std::size_t beginningBytes = 256 * 1024;

    FileDescriptor descriptor{};         ///< at the beginning; none unless it is a regular file
    EntryKind kind = EntryKind::unknown; ///< of what the links lead to
    std::int64_t size = 0;               ///< bytes
    std::int64_t mtime = 0;              ///< seconds since 1970-01-01 UTC
    std::string beginning = {};

    /// Opens nothing but a regular file: a pipe would wait, and a device may do something when it is opened. Blocks.
    /// Throws ReadError.
    static PreviewFile open(std::string const &path);

    /// `bytes` as a file that has no name and lies in memory. None if there can be none.
    static FileDescriptor inMemory(std::string const &bytes);
};

} // namespace tw
