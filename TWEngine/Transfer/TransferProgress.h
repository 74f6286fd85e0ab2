#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

namespace tw {

/// How far a transfer is.
struct TransferProgress {
    std::int64_t bytes = 0;                 ///< done so far; of a tar stream with its headers and padding
    std::optional<std::int64_t> total = {}; ///< bytes; nothing if it is not known
    std::string item = {};                  ///< what is being copied
    std::int64_t files = 0;                 ///< done so far
    std::optional<std::int64_t> totalFiles = {};

    /// Between 0 and 1; nothing if the total is not known or below 1.
    std::optional<double> fraction() const
    {
        if (!total || *total < 1)
            return std::nullopt;
        return std::min(1.0, static_cast<double>(bytes) / static_cast<double>(*total));
    }
};

} // namespace tw
