#include "tests/support/Listings.h"

namespace tw::test {

ListedEntry file(std::string name, std::int64_t size, std::int64_t mtime)
{
    return {std::move(name), EntryKind::file, size, mtime, 0644};
}

ListedEntry directory(std::string name, std::int64_t size, std::int64_t mtime)
{
    return {std::move(name), EntryKind::directory, size, mtime, 0755};
}

ListedEntry symlink(std::string name, std::int64_t size, std::int64_t mtime)
{
    return {std::move(name), EntryKind::symlink, size, mtime, 0777};
}

DirectorySnapshot listing(std::string path, std::vector<ListedEntry> const &rows,
                          std::chrono::system_clock::time_point fetchedAt, Completeness completeness)
{
    std::string storage;
    std::vector<Entry> entries;
    for (auto const &row : rows) {
        entries.push_back({.nameOffset = static_cast<std::uint32_t>(storage.size()),
                           .nameLength = static_cast<std::uint32_t>(row.name.size()),
                           .size = row.size,
                           .mtime = row.mtime,
                           .mode = row.mode,
                           .kind = row.kind});
        storage += row.name;
    }
    return {std::move(path), std::make_shared<std::string const>(std::move(storage)), std::move(entries), fetchedAt,
            completeness == Completeness::truncated};
}

std::vector<std::string> names(DirectorySnapshot const &snapshot)
{
    std::vector<std::string> all;
    for (auto const &entry : snapshot.entries())
        all.emplace_back(snapshot.nameBytes(entry));
    return all;
}

} // namespace tw::test
