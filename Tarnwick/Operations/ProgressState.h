#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tw {

/// How far some work is.
struct ProgressState {
    std::int64_t bytes = 0;
    std::optional<std::int64_t> total = {}; ///< bytes; nothing if it is not known
    std::string item = {};                  ///< what is being worked on; empty: as before
    std::int64_t files = 0;                 ///< done so far
    std::optional<std::int64_t> totalFiles = {};

    /// "12K of 3.4M", or what is done alone where the total is not known.
    std::string text() const;

    /// Between 0 and 1; nothing if the total is not known or below 1.
    std::optional<double> share() const;
};

} // namespace tw
