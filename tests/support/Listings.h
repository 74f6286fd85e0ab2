#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <chrono>
#include <string>
#include <vector>

namespace tw::test {

/// One row of a listing under test.
struct ListedEntry {
    std::string name;
    EntryKind kind = EntryKind::file;
    std::int64_t size = 0;
    std::int64_t mtime = 0;
    std::uint16_t mode = 0;
};

ListedEntry file(std::string name, std::int64_t size = 0, std::int64_t mtime = 0);
ListedEntry directory(std::string name, std::int64_t size = 0, std::int64_t mtime = 0);
ListedEntry symlink(std::string name, std::int64_t size = 0, std::int64_t mtime = 0);

enum class Completeness { whole, truncated };

/// A snapshot with these rows, in this order. The storage holds only their names.
DirectorySnapshot listing(std::string path, std::vector<ListedEntry> const &rows,
                          std::chrono::system_clock::time_point fetchedAt = {},
                          Completeness completeness = Completeness::whole);

/// The exact bytes of all names, in the order of the listing.
std::vector<std::string> names(DirectorySnapshot const &snapshot);

} // namespace tw::test
