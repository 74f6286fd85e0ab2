#include "TWCore/Model/NameSorter.h"

#include "TWCore/Check.h"
#include "TWCore/Model/MergeSort.h"

#include <bit>
#include <cstring>

namespace tw {

namespace {

using NameRow = NameSorter::NameRow;

/// How often the names of a run may turn out to begin alike before they are compared in whole: bounds the recursion for
/// hostile names.
constexpr int deepestLook = 8;

/// One bit a byte, its highest.
constexpr std::uint64_t topBits = 0x8080808080808080;

constexpr std::uint64_t eachByte(std::uint8_t byte)
{
    return 0x0101010101010101U * byte;
}

/// The top bit of each of the eight bytes that is from `first` to `last`, both ASCII. Adding the distance from a limit
/// to 0x80 carries into the top bit where the limit is reached, and never into the next byte.
constexpr std::uint64_t bytesWithin(std::uint64_t bytes, char first, char last)
{
    auto const lowerSeven = bytes & ~topBits;
    auto const fromFirst = lowerSeven + eachByte(static_cast<std::uint8_t>(0x80 - first));
    auto const beyondLast = lowerSeven + eachByte(static_cast<std::uint8_t>(0x7F - last));
    return (fromFirst ^ beyondLast) & ~bytes & topBits;
}

/// The first eight bytes as a number, the first one highest, so that numbers order as the bytes do. Behind a shorter
/// name stand zeros, which put it first.
std::uint64_t firstEightBytes(std::string_view name)
{
    std::uint64_t bytes = 0;
    if (name.size() >= sizeof bytes)
        std::memcpy(&bytes, name.data(), sizeof bytes);
    else if (!name.empty())
        std::memcpy(&bytes, name.data(), name.size());
    if constexpr (std::endian::native == std::endian::little)
        bytes = __builtin_bswap64(bytes);
    return bytes;
}

/// How many bytes all the names have in common. They decide nothing, in no order of names.
std::uint32_t commonLength(std::span<NameRow const> rows)
{
    auto common = rows.front().bytes();
    for (auto const &row : rows) {
        auto const longest = std::min<std::size_t>(common.size(), row.length);
        auto const differs = std::mismatch(common.begin(), common.begin() + longest, row.name).first;
        common = common.substr(0, static_cast<std::size_t>(differs - common.begin()));
        if (common.empty())
            break;
    }
    return static_cast<std::uint32_t>(common.size());
}

constexpr bool isBetweenTheCases(std::uint64_t byte)
{
    return byte >= '[' && byte <= '`';
}

constexpr bool isLetter(std::uint64_t byte)
{
    return byte >= 'a' && byte <= 'z';
}

/// Whether the beginning of `a` is before that of `b`, in an order of which only the names know all.
bool beginsBefore(NameRow const &a, NameRow const &b)
{
    if (a.beginning == b.beginning)
        return false;
    auto const shift = 56 - (std::countl_zero(a.beginning ^ b.beginning) & ~7);
    auto const byteA = (a.beginning >> shift) & 0xFF;
    auto const byteB = (b.beginning >> shift) & 0xFF;
    if ((isBetweenTheCases(byteA) && isLetter(byteB)) || (isLetter(byteA) && isBetweenTheCases(byteB)))
        return DirectorySnapshot::ordered(a.bytes(), b.bytes());
    return a.beginning < b.beginning;
}

template <class Before>
void sortBy(Before before, std::span<NameRow> rows, std::span<NameRow> scratch, SortDirection direction)
{
    if (direction == SortDirection::ascending)
        mergeSort(rows, scratch, before);
    else
        mergeSort(rows, scratch, [before](NameRow const &a, NameRow const &b) { return before(b, a); });
}

enum class Beginnings { orderAsNumbers, needTheNames };

/// Fills in the beginnings, behind what all names have in common.
///
/// As numbers they order as their names do, but for one case: a byte from "[" to "`" stands behind a letter of upper
/// case, and would stand before it in lower case. Where no place of the eight has both, that cannot happen.
Beginnings prepareBeginnings(std::span<NameRow> rows)
{
    auto const common = commonLength(rows);
    std::uint64_t upperCase = 0;
    std::uint64_t betweenTheCases = 0;
    for (auto &row : rows) {
        row.name += common;
        row.length -= common;
        auto const bytes = firstEightBytes(row.bytes());
        auto const toLower = bytesWithin(bytes, 'A', 'Z');
        row.beginning = bytes | (toLower >> 2); // 0x80 becomes 0x20, the difference between the cases
        upperCase |= toLower;
        betweenTheCases |= bytesWithin(bytes, '[', '`');
    }
    return (upperCase & betweenTheCases) == 0 ? Beginnings::orderAsNumbers : Beginnings::needTheNames;
}

void sortNames(std::span<NameRow> rows, std::span<NameRow> scratch, SortDirection direction, int looksLeft)
{
    if (rows.size() <= mergeSortSteps::runLength || looksLeft == 0) {
        auto const byWholeName = [](NameRow const &a, NameRow const &b) {
            return DirectorySnapshot::ordered(a.bytes(), b.bytes());
        };
        return sortBy(byWholeName, rows, scratch, direction);
    }
    if (prepareBeginnings(rows) == Beginnings::orderAsNumbers) {
        auto const byNumber = [](NameRow const &a, NameRow const &b) { return a.beginning < b.beginning; };
        sortBy(byNumber, rows, scratch, direction);
    } else {
        auto const byBeginning = [](NameRow const &a, NameRow const &b) { return beginsBefore(a, b); };
        sortBy(byBeginning, rows, scratch, direction);
    }
    for (std::size_t begin = 0; begin < rows.size();) {
        auto end = begin + 1;
        while (end < rows.size() && rows[end].beginning == rows[begin].beginning)
            ++end;
        auto const length = end - begin;
        if (length > 1)
            sortNames(rows.subspan(begin, length), scratch.subspan(begin, length), direction, looksLeft - 1);
        begin = end;
    }
}

} // namespace

NameSorter::NameSorter(DirectorySnapshot const &snapshot, Collation const &collation)
    : listing(snapshot), keys(collation)
{
}

void NameSorter::sort(std::span<std::uint32_t> rows, SortDirection direction)
{
    auto const entries = listing.entries();
    named.clear();
    named.reserve(rows.size());
    for (auto const row : rows) {
        check(row < entries.size(), "a row to sort lies outside its listing");
        auto const key = keys.key(row);
        auto const name = key ? *key : listing.nameBytes(entries[row]);
        named.push_back({.name = name.data(), .length = static_cast<std::uint32_t>(name.size()), .row = row});
    }
    if (scratch.size() < named.size())
        scratch.resize(named.size());
    sortNames(named, std::span(scratch).first(named.size()), direction, deepestLook);
    for (std::size_t place = 0; place < rows.size(); ++place)
        rows[place] = named[place].row;
}

} // namespace tw
