#pragma once

#include "TWCore/Model/FileOperationError.h"

namespace tw {

/// Thrown when a tool wants the password of an archive, or another one than it was given.
class ArchivePasswordError final : public FileOperationError {
public:
    ArchivePasswordError(std::string const &operation, std::string const &path)
        : FileOperationError(operation + " failed on " + path + ": it is encrypted")
    {
    }
};

} // namespace tw
