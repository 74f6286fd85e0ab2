#pragma once

#include "TWCore/Model/FileOperationError.h"

#include <cstdint>
#include <optional>

namespace tw {

/// Thrown before more is unpacked than a person may expect. Unpacking can go on if the user wants it.
class ArchiveTooLarge final : public FileOperationError {
public:
    ArchiveTooLarge(std::int64_t unpacked, std::optional<std::int64_t> freeBytes);

    std::int64_t const bytes;               ///< unpacked
    std::optional<std::int64_t> const free; ///< where it is to go; nothing if that is unknown
};

} // namespace tw
