#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// Reading and copying files of this machine. All of it blocks: for a worker thread.
namespace tw::LocalFiles {

/// Up to `length` bytes from `offset` (below 0 counts as 0) on; fewer at the end. Throws ReadError::NotReadable.
std::string readChunk(std::string const &path, std::int64_t offset, std::size_t length);

/// For reading. Does not wait for a pipe. Throws ReadError::NotReadable.
FileDescriptor open(std::string const &path);

/// Bytes; of a link itself, not of its target. Throws ReadError::NotReadable.
std::int64_t size(std::string const &path);

/// Copies `path` to `target`, in place of whatever is there, which goes only when the copy is complete. Two names of
/// one file are left alone. Throws ReadError::NotReadable.
void copyTo(std::string const &path, std::string const &target);

/// Writes the bytes of `source` into the file `target`, which stays the same file, with its permissions and hard
/// links, or into a new one. Throws PlatformError.
void writeInto(std::string const &source, std::string const &target);

} // namespace tw::LocalFiles
