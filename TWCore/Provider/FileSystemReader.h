#pragma once

#include "TWCore/Provider/FileSystemProvider.h"

#include <cstdint>

namespace tw {

/// A place whose files can be read.
class FileSystemReader : public virtual FileSystemProvider {
public:
    /// Up to `length` bytes from `offset` on: fewer at the end of the file, none after it.
    virtual Task<std::string> readChunk(std::string path, std::int64_t offset, std::size_t length) = 0;

    /// In bytes.
    virtual Task<std::int64_t> fileSize(std::string path) = 0;

    /// Copies the file at `path` to `localPath` on this machine, and replaces an existing file.
    virtual Task<void> download(std::string path, std::string localPath) = 0;

    /// Copies the file at `localPath` on this machine to `path`.
    virtual Task<void> upload(std::string localPath, std::string path) = 0;
};

} // namespace tw
