#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

namespace tw {

/// What an entry is. The raw value is the type letter of the listing stream, as `find -printf %y` prints it.
enum class EntryKind : std::uint8_t {
    file = 'f',
    directory = 'd',
    symlink = 'l',
    blockDev = 'b',
    charDev = 'c',
    fifo = 'p',
    socket = 's',
    unknown = '?',
};

/// The kind of a type letter, or nothing for any other byte.
std::optional<EntryKind> entryKindFromRaw(std::uint8_t raw) noexcept;

/// The kind of a type letter, or `unknown` for any other byte. For parsers, since a host may send anything.
EntryKind entryKind(std::uint8_t byte) noexcept;

/// The kind in the bits of a file's mode, which every POSIX system numbers in the same way.
EntryKind entryKindOfMode(std::uint32_t mode) noexcept;

/// One row of a listing: a flat record that points into the snapshot's shared name storage.
///
/// Kept free of references so that a listing of 100,000 files is one block of memory.
struct Entry {
    std::uint32_t nameOffset = 0; ///< bytes from the start of the storage
    std::uint32_t nameLength = 0; ///< bytes; the name is not terminated and need not be UTF-8
    std::int64_t size = 0;        ///< bytes, as the source reported it
    std::int64_t mtime = 0;       ///< whole seconds since 1970-01-01 UTC
    std::uint16_t mode = 0;       ///< permission bits as the source reported them
    EntryKind kind = EntryKind::unknown;

    /// A link to a directory is not a directory here.
    bool isDirectory() const noexcept { return kind == EntryKind::directory; }

    friend bool operator==(Entry const &, Entry const &) = default;
};

static_assert(sizeof(Entry) == 32, "the memory of a held listing is counted on 32 bytes an entry");

} // namespace tw

template <>
struct std::hash<tw::Entry> {
    /// Compares all six fields.
    std::size_t operator()(tw::Entry const &entry) const noexcept;
};
