#include "TWCore/Model/DirectorySnapshot.h"

#include "TWCore/Check.h"
#include "TWCore/Model/Collation.h"
#include "TWCore/Model/DisplayText.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tw {

namespace {

std::uint64_t eightBytesAt(std::string_view bytes, std::size_t position)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data() + position, sizeof word);
    return word;
}

/// Where the two differ first, from `start` on; `length`, which both have, if they do not. Eight bytes at a time, since
/// the names of a large folder tend to begin alike.
std::size_t firstDifference(std::string_view a, std::string_view b, std::size_t start, std::size_t length)
{
    auto position = start;
    for (; length - position >= 8; position += 8) {
        auto const difference = eightBytesAt(a, position) ^ eightBytesAt(b, position);
        if (difference == 0)
            continue;
        auto const equalBits =
            std::endian::native == std::endian::little ? std::countr_zero(difference) : std::countl_zero(difference);
        return position + static_cast<std::size_t>(equalBits / 8);
    }
    while (position < length && a[position] == b[position])
        ++position;
    return position;
}

constexpr std::uint8_t folded(std::uint8_t byte)
{
    return byte | 0x20;
}

constexpr bool isLetter(std::uint8_t foldedByte)
{
    return foldedByte >= 'a' && foldedByte <= 'z';
}

} // namespace

DirectorySnapshot::DirectorySnapshot(std::string path, NameStorage storage, std::vector<Entry> entries,
                                     std::chrono::system_clock::time_point fetchedAt, bool truncated)
    : directory(std::move(path)), names(std::move(storage)), taken(fetchedAt), cut(truncated)
{
    // A listing is held for long, in a cache with a budget: the slack of a vector that grew must not be held with it.
    entries.shrink_to_fit();
    rows = std::make_shared<std::vector<Entry> const>(std::move(entries));
}

std::span<Entry const> DirectorySnapshot::entries() const noexcept
{
    return rows ? std::span<Entry const>(*rows) : std::span<Entry const>();
}

std::string_view DirectorySnapshot::nameBytes(Entry const &entry) const
{
    auto const stored = names ? std::string_view(*names) : std::string_view();
    check(std::uint64_t{entry.nameOffset} + entry.nameLength <= stored.size(),
          "an entry's name lies outside the storage of its listing");
    return {stored.data() + entry.nameOffset, entry.nameLength};
}

std::string DirectorySnapshot::name(Entry const &entry) const
{
    return repaired(nameBytes(entry));
}

std::string DirectorySnapshot::name(std::size_t index) const
{
    check(index < count(), "an index lies outside its listing");
    return name(entries()[index]);
}

std::string DirectorySnapshot::childPath(Entry const &entry) const
{
    auto const child = nameBytes(entry);
    std::string path;
    path.reserve(directory.size() + 1 + child.size());
    if (directory != "/")
        path = directory;
    path += '/';
    path += child;
    return path;
}

bool DirectorySnapshot::nameIsOrderedBefore(Entry const &a, Entry const &b) const
{
    return ordered(nameBytes(a), nameBytes(b));
}

bool DirectorySnapshot::nameIsOrderedBefore(std::size_t a, std::size_t b, Collation const &collation) const
{
    check(a < count() && b < count(), "an index lies outside its listing");
    auto const sortName = [&](std::size_t index) {
        auto const key = collation.key(index);
        return key ? *key : nameBytes(entries()[index]);
    };
    return ordered(sortName(a), sortName(b));
}

bool DirectorySnapshot::ordered(std::string_view a, std::string_view b) noexcept
{
    auto const shorter = std::min(a.size(), b.size());
    enum class Tie { undecided, aFirst, bFirst };
    auto tie = Tie::undecided;
    for (std::size_t position = 0;; ++position) {
        position = firstDifference(a, b, position, shorter);
        if (position == shorter)
            break;
        auto const byteA = static_cast<std::uint8_t>(a[position]);
        auto const byteB = static_cast<std::uint8_t>(b[position]);
        if (!isLetter(folded(byteA)) || !isLetter(folded(byteB)))
            return byteA < byteB;
        if (folded(byteA) != folded(byteB))
            return folded(byteA) < folded(byteB);
        if (tie == Tie::undecided)
            tie = byteA < byteB ? Tie::aFirst : Tie::bFirst;
    }
    if (a.size() != b.size())
        return a.size() < b.size();
    return tie == Tie::aFirst;
}

} // namespace tw
