#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// The names of some rows in a form that does not care about case or composition, to be searched as one text.
///
/// Made once for a search: to fold the names costs more than to look through them. In one block of memory they are
/// looked through as fast as memory is read.
class FoldedNames {
public:
    /// `rows` are indexes of the listing's entries.
    FoldedNames(DirectorySnapshot const &listing, std::span<std::uint32_t const> rows);

    /// The place among the rows of the first name, from the place `from` on and round, that begins with `typed`. If
    /// none does, of the first that contains it.
    std::optional<std::size_t> find(std::string_view typed, std::size_t from) const;

private:
    std::optional<std::size_t> findRound(std::string_view wanted, std::size_t from) const;

    std::string text;                  ///< every name, with a zero byte before it, and one at the end
    std::vector<std::uint32_t> starts; ///< of each name's zero byte
};

} // namespace tw
