#pragma once

#include <optional>
#include <string_view>

namespace tw {

/// What the rows of a pane are sorted by.
enum class SortKey { name, ext, size, date };

/// The stored text of a sort key: "name", "ext", "size", "date".
std::string_view sortKeyText(SortKey key);
std::optional<SortKey> sortKeyFromText(std::string_view text);

/// How a pane shows any listing.
struct ViewOptions {
    SortKey sortKey = SortKey::name;
    bool ascending = true;
    bool showHidden = false;

    /// Sorted by `key` in the direction that people expect of it, or in the other one if it is the key already.
    ViewOptions sortedBy(SortKey key) const;

    friend bool operator==(ViewOptions const &, ViewOptions const &) = default;
};

} // namespace tw
