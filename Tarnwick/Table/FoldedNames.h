#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// The names of a listing in a form that does not care about case or composition, to be searched as one text.
///
/// In one block of memory, in the order of the listing, they are made and looked through as fast as memory is read.
/// They do not depend on how the rows are sorted and filtered.
///
/// Threads: may be made and used anywhere.
class FoldedNames {
public:
    /// The place of an entry that is not on show.
    static constexpr auto notOnShow = std::numeric_limits<std::uint32_t>::max();

    explicit FoldedNames(DirectorySnapshot const &listing);

    /// The same, or nothing if it is called off meanwhile: a listing may have millions of names.
    static std::optional<FoldedNames> of(DirectorySnapshot const &listing, std::stop_token const &calledOff);

    /// For each entry of a listing of `count` entries its place among `rows`.
    static std::vector<std::uint32_t> placesOf(std::span<std::uint32_t const> rows, std::size_t count);

    /// The place of the first name, from the place `from` on and round, that begins with `typed`. If none does, of the
    /// first that contains it. `places` are those of the entries.
    std::optional<std::size_t> find(std::string_view typed, std::size_t from,
                                    std::span<std::uint32_t const> places) const;

private:
    FoldedNames() = default;

    /// False if it is called off.
    bool take(DirectorySnapshot const &listing, std::stop_token const &calledOff);

    /// All of the form but the case of ASCII letters.
    void append(std::string_view name);

    std::string text;                  ///< every name, with a zero byte before it, and one at the end
    std::vector<std::uint32_t> starts; ///< of each name's zero byte, and of the one at the end
};

} // namespace tw
