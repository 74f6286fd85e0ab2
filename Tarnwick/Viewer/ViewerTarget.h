#pragma once

#include "Tarnwick/Viewer/ViewerMode.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace tw {

/// Where somebody wants to go in a file.
struct ViewerTarget {
    enum class Unit { line, percent, offset };

    Unit unit = Unit::line;
    std::int64_t number = 0; ///< lines count from 1

    /// Reads "50%", the offsets "0x1F0", "@1000" and "12M" (K, M, G, T in powers of 1024 bytes), and a plain number,
    /// which is a line in a text and an offset in a hex dump. Nothing for any other text.
    static std::optional<ViewerTarget> parse(std::string_view typed, ViewerMode mode);

    friend bool operator==(ViewerTarget const &, ViewerTarget const &) = default;
};

} // namespace tw
