#pragma once

#include "TWCore/Model/Entry.h"

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

class Collation;

/// The bytes that the names of one or many snapshots point into: never written after creation, shared, not copied.
using NameStorage = std::shared_ptr<std::string const>;

/// One listing of one directory: immutable, in the order of its source.
///
/// It holds no string per file. Its entries point by offset and length into `storage`. All snapshots of one fetch share
/// one storage, which may hold bytes that no entry refers to. A copy is two references and a path, whatever the length
/// of the listing.
///
/// Threads: an immutable value; may be used from anywhere.
/// Errors: an index out of range and an entry that points outside the storage are bugs and stop the process.
class DirectorySnapshot {
public:
    DirectorySnapshot() = default;

    /// `path` is normalised and absolute. Every entry's name lies inside `storage`.
    DirectorySnapshot(std::string path, NameStorage storage, std::vector<Entry> entries,
                      std::chrono::system_clock::time_point fetchedAt, bool truncated);

    std::string const &path() const noexcept { return directory; }

    NameStorage const &storage() const noexcept { return names; }

    std::span<Entry const> entries() const noexcept;

    std::size_t count() const noexcept { return entries().size(); }

    /// When this listing was read.
    std::chrono::system_clock::time_point fetchedAt() const noexcept { return taken; }

    /// The source cut the listing short: `entries` is not the whole directory.
    bool truncated() const noexcept { return cut; }

    /// The exact bytes of a name.
    std::string_view nameBytes(Entry const &entry) const;

    /// A name for display: UTF-8, with replacement characters for invalid bytes.
    std::string name(Entry const &entry) const;
    std::string name(std::size_t index) const;

    /// The full path of a child, with the exact bytes of its name, so that the path names the right file.
    std::string childPath(Entry const &entry) const;

    /// The name order over the stored bytes.
    bool nameIsOrderedBefore(Entry const &a, Entry const &b) const;

    /// The name order with a collation that was made from this snapshot.
    bool nameIsOrderedBefore(std::size_t a, std::size_t b, Collation const &collation) const;

    /// The order of names: bytes, case-insensitive for ASCII letters, with the first difference in case as a
    /// tie-break. No locale and no allocation, which is what makes sorting a large directory fast.
    ///
    /// Not transitive where a byte from "[" to "`" meets letters of both cases ("ab" < "AC" < "_" < "ab"). A merge sort
    /// tolerates that, `std::sort` does not.
    static bool ordered(std::string_view a, std::string_view b) noexcept;

private:
    std::string directory;
    NameStorage names;
    std::shared_ptr<std::vector<Entry> const> rows;
    std::chrono::system_clock::time_point taken;
    bool cut = false;
};

} // namespace tw
