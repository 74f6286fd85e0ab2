#pragma once

#include "TWCore/Model/ListingParser.h"

#include <compare>
#include <iosfwd>
#include <set>

namespace tw::test {

/// One entry of a tree, by its path below the root.
struct Row {
    std::string path;
    EntryKind kind = EntryKind::unknown;
    std::int64_t size = 0;
    std::int64_t mtime = 0;
    std::uint16_t mode = 0;

    friend auto operator<=>(Row const &, Row const &) = default;

    friend void PrintTo(Row const &row, std::ostream *stream);
};

using Rows = std::set<Row>;

/// The tree on the disk, `depth` levels down. Links are entries and not followed, except for the root.
Rows rowsOnDisk(std::string const &root, int depth);

/// The rows of a scan of `root`.
Rows rowsOf(std::map<std::string, DirectorySnapshot> const &listings, std::string const &root);

/// The names in a folder on the disk, as sorted bytes: each file system hands them out in an order of its own.
std::vector<std::string> namesOnDisk(std::string const &path);

/// Different valid names that break code which treats names as text, words or lines. The last name has every byte that
/// a name can have.
std::vector<std::string> hostileNames();

} // namespace tw::test
