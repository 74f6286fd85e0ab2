#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>

namespace tw {

/// A character of a file that is looked at. The place of a row is that of its first character.
struct ViewerPlace {
    std::int64_t line = 0; ///< offset of the line's first byte
    std::size_t character = 0;

    friend auto operator<=>(ViewerPlace const &, ViewerPlace const &) = default;
};

/// One row on screen.
struct ViewerRow {
    ViewerPlace place;
    std::u32string text; ///< as far as the row is wide

    friend bool operator==(ViewerRow const &, ViewerRow const &) = default;
};

} // namespace tw
