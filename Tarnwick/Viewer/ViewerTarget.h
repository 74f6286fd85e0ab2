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

    /// What was typed: "50%", "0x1F0", "@1000", "12M" (from 1024 bytes on), and a plain number, which is a line in a
    /// text and an offset in a hex dump. Nothing if it is none of them.
    static std::optional<ViewerTarget> parse(std::string_view typed, ViewerMode mode);

    friend bool operator==(ViewerTarget const &, ViewerTarget const &) = default;
};

} // namespace tw
