#include "TWCore/Model/SnapshotCodec.h"

#include "TWCore/Check.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

namespace tw::SnapshotCodec {

namespace {

constexpr std::string_view magic = "TWS1";
constexpr std::uint8_t version = 1;
constexpr std::size_t headerSize = 24;
constexpr std::size_t recordSize = 27;
constexpr std::uint64_t largestNumber = std::numeric_limits<std::uint32_t>::max();

using std::chrono::seconds;
using std::chrono::system_clock;

// A time is finite and its whole seconds fit 64 bits, whatever it is: there is nothing to check when it is written.
static_assert(std::is_integral_v<system_clock::rep> && sizeof(system_clock::rep) <= sizeof(std::int64_t));

/// Half of what the clock can tell, to either side of 1970 (the years 1824 to 2116): the age of a listing is the
/// difference of two times, and must not overflow because of a date that no listing was ever taken at.
constexpr auto furthestTime = std::chrono::duration_cast<seconds>(system_clock::duration::max()) / 2;

// Numbers and records are written as they lie in memory, which is what makes a listing of 100,000 entries a matter of
// a fraction of a millisecond.
static_assert(std::endian::native == std::endian::little, "a machine of the other byte order has to swap");
static_assert(offsetof(Entry, nameOffset) == 0 && offsetof(Entry, nameLength) == 4 && offsetof(Entry, size) == 8 &&
                  offsetof(Entry, mtime) == 16 && offsetof(Entry, mode) == 24 && offsetof(Entry, kind) == 26 &&
                  std::is_trivially_copyable_v<Entry>,
              "a record is the beginning of an entry");

template <class Number>
void put(char *at, Number value)
{
    std::memcpy(at, &value, sizeof value);
}

template <class Number>
Number get(char const *at)
{
    Number value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

struct Extent {
    std::uint64_t entries = 0;
    std::uint64_t nameBytes = 0;

    /// Of a whole blob. Does not overflow for what a header can say: both are below 2^32.
    std::uint64_t blobSize() const { return headerSize + entries * recordSize + nameBytes; }
};

/// Not empty, and inside the storage.
bool hasName(Entry const &entry, std::uint64_t storageSize)
{
    return entry.nameLength > 0 && std::uint64_t{entry.nameOffset} + entry.nameLength <= storageSize;
}

Extent extentOf(std::span<Entry const> entries, std::uint64_t storageSize)
{
    Extent extent;
    for (auto const &entry : entries) {
        if (!hasName(entry, storageSize))
            continue;
        ++extent.entries;
        extent.nameBytes += entry.nameLength;
    }
    return extent;
}

void putHeader(char *at, DirectorySnapshot const &snapshot, Extent const &extent)
{
    std::memcpy(at, magic.data(), magic.size());
    put<std::uint8_t>(at + 4, version);
    put<std::uint8_t>(at + 5, snapshot.truncated() ? 1 : 0);
    put<std::uint16_t>(at + 6, 0);
    put(at + 8, static_cast<std::uint32_t>(extent.entries));
    put(at + 12, static_cast<std::uint32_t>(extent.nameBytes));
    auto const taken = std::chrono::duration_cast<seconds>(snapshot.fetchedAt().time_since_epoch());
    put<std::int64_t>(at + 16, taken.count());
}

/// Packs names one behind the other into a space of the exact size.
class NamePacker {
public:
    NamePacker(std::span<char> space, std::string_view storage) : target(space), source(storage) {}

    void add(Entry const &entry)
    {
        // Nearly all names are shorter than this, and a copy of a fixed size is two instructions where one of a varying
        // size is a call and a wrongly predicted branch. What is copied too much, the next name writes over.
        constexpr std::uint32_t block = 32;
        auto const *const name = source.data() + entry.nameOffset;
        auto const fits =
            entry.nameLength <= block && source.size() - entry.nameOffset >= block && target.size() - packed >= block;
        if (fits)
            std::memcpy(target.data() + packed, name, block);
        else
            std::memcpy(target.data() + packed, name, entry.nameLength);
        packed += entry.nameLength;
    }

    std::uint32_t size() const { return packed; }

private:
    std::span<char> const target;
    std::string_view const source;
    std::uint32_t packed = 0;
};

/// The records and the names, in one pass over the entries.
void putEntries(char *records, NamePacker names, std::span<Entry const> entries, std::uint64_t storageSize)
{
    for (auto const &entry : entries) {
        if (!hasName(entry, storageSize))
            continue;
        std::memcpy(records, &entry, recordSize);
        put(records, names.size());
        names.add(entry);
        records += recordSize;
    }
}

/// What the letter of a record stands for, by its byte.
std::array<EntryKind, 256> const &kindsByByte()
{
    static auto const kinds = [] {
        std::array<EntryKind, 256> table;
        for (std::size_t byte = 0; byte < table.size(); ++byte)
            table[byte] = entryKind(static_cast<std::uint8_t>(byte));
        return table;
    }();
    return kinds;
}

/// Whether the names hold only bytes that a file's name can have. A damaged slash would name another file.
bool areNameBytes(std::string_view names)
{
    return !names.contains('/') && !names.contains('\0');
}

/// The two names that each folder has for itself and for the one above.
bool isDots(std::string_view name)
{
    return name == "." || name == "..";
}

/// Nothing if an entry has no name that a file can have. The caller has seen that all records and names are there.
std::optional<std::vector<Entry>> getEntries(char const *records, Extent const &extent)
{
    auto const &kinds = kindsByByte();
    std::string_view const names(records + extent.entries * recordSize, extent.nameBytes);
    if (!areNameBytes(names))
        return std::nullopt;
    std::vector<Entry> entries;
    entries.reserve(extent.entries);
    bool areNames = true;
    for (std::uint64_t i = 0; i < extent.entries; ++i, records += recordSize) {
        auto const &entry = entries.emplace_back(Entry{.nameOffset = get<std::uint32_t>(records),
                                                       .nameLength = get<std::uint32_t>(records + 4),
                                                       .size = get<std::int64_t>(records + 8),
                                                       .mtime = get<std::int64_t>(records + 16),
                                                       .mode = get<std::uint16_t>(records + 24),
                                                       .kind = kinds[get<std::uint8_t>(records + 26)]});
        areNames &= hasName(entry, extent.nameBytes);
        if (areNames && entry.nameLength <= 2) [[unlikely]]
            areNames = !isDots(names.substr(entry.nameOffset, entry.nameLength));
    }
    return areNames ? std::optional(std::move(entries)) : std::nullopt;
}

} // namespace

std::string encode(DirectorySnapshot const &snapshot)
{
    auto const entries = snapshot.entries();
    auto const storage = snapshot.storage() ? std::string_view(*snapshot.storage()) : std::string_view("");
    auto const extent = extentOf(entries, storage.size());
    check(extent.entries <= largestNumber, "a listing to encode has more than 2^32 entries");
    check(extent.nameBytes <= largestNumber, "a listing to encode has more than 4 GiB of names");

    // The first pass told the exact size, so that the blob is the only allocation and no byte of it is written twice.
    std::string blob;
    blob.resize_and_overwrite(extent.blobSize(), [&](char *bytes, std::size_t /*capacity, in some libraries*/) {
        putHeader(bytes, snapshot, extent);
        auto *const records = bytes + headerSize;
        NamePacker const names({records + extent.entries * recordSize, extent.nameBytes}, storage);
        putEntries(records, names, entries, storage.size());
        return extent.blobSize();
    });
    return blob;
}

std::optional<DirectorySnapshot> decode(std::string_view bytes, std::string path)
{
    if (bytes.size() < headerSize || !bytes.starts_with(magic) || get<std::uint8_t>(bytes.data() + 4) != version)
        return std::nullopt;
    auto const isTruncated = get<std::uint8_t>(bytes.data() + 5) == 1;
    Extent const extent{.entries = get<std::uint32_t>(bytes.data() + 8),
                        .nameBytes = get<std::uint32_t>(bytes.data() + 12)};
    seconds const taken(get<std::int64_t>(bytes.data() + 16));
    if (bytes.size() < extent.blobSize() || taken > furthestTime || taken < -furthestTime)
        return std::nullopt;

    auto const *const records = bytes.data() + headerSize;
    auto entries = getEntries(records, extent);
    if (!entries)
        return std::nullopt;
    auto storage = std::make_shared<std::string const>(records + extent.entries * recordSize, extent.nameBytes);
    return DirectorySnapshot(std::move(path), std::move(storage), *std::move(entries), system_clock::time_point(taken),
                             isTruncated);
}

} // namespace tw::SnapshotCodec
