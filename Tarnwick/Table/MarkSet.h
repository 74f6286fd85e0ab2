#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace tw {

/// Which entries of a listing are marked.
///
/// A mark belongs to a name, so that it survives a refresh. It is kept by the entry's index, so that a look at it costs
/// the same with 100,000 marks as with none. Only the marks on names that a newer listing lacks are kept as names: they
/// count for nothing, and come back with the name.
class MarkSet {
public:
    bool contains(std::uint32_t index) const { return index < flags.size() && flags[index]; }

    /// Whether the mark was changed.
    bool set(std::uint32_t index, bool marked);

    void clear();

    /// Forgets the marks on names that the listing lacks.
    void clearAbsent() { absent.clear(); }

    /// True with no mark at all, on a name of the listing or on another.
    bool isEmpty() const noexcept { return count == 0 && absent.empty(); }

    /// Carries the marks on the names of `before` over to the entries of `after` that bear these names.
    void carryOver(DirectorySnapshot const &before, DirectorySnapshot const &after);

private:
    std::vector<bool> flags; ///< by the index of the entry
    std::size_t count = 0;   ///< of the flags that are set
    std::set<std::string> absent;
};

} // namespace tw
