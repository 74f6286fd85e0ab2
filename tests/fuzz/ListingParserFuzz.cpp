// ListingParser over any bytes, held against the plainest reading of the same records.
//
// The first byte of an input says how the rest is read.

#include "TWCore/Check.h"
#include "TWCore/Model/ListingScan.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <sstream>
#include <vector>

namespace tw {
namespace {

using ListingParser::Completeness;

struct Record {
    char type = 0;
    std::uint64_t size = 0;
    std::uint64_t mtime = 0;
    std::uint32_t mode = 0;
    std::string path;
};

struct Settings {
    int maxDepth;
    Completeness completeness;
    std::string root;
};

Settings settingsOf(std::uint8_t byte)
{
    return {.maxDepth = 1 + byte % 8,
            .completeness = (byte & 8) != 0 ? Completeness::truncated : Completeness::whole,
            .root = (byte & 16) != 0 ? "/" : "/some where"};
}

std::uint64_t number(std::string_view field, unsigned base)
{
    std::uint64_t value = 0;
    for (auto const character : field) {
        auto const digit = static_cast<unsigned>(static_cast<unsigned char>(character)) - '0';
        if (digit < base)
            value = value * base + digit;
    }
    return value;
}

/// The next record, or nothing if it breaks off before its path.
std::optional<Record> takeRecord(std::string_view &rest, bool &hasEnd)
{
    rest.remove_prefix(std::min(rest.find_first_not_of("\r\n"), rest.size()));
    std::vector<std::string_view> fields;
    for (int index = 0; index < 4; ++index) {
        auto const tab = rest.find('\t');
        if (tab == std::string_view::npos)
            return std::nullopt;
        fields.push_back(rest.substr(0, tab));
        rest.remove_prefix(tab + 1);
    }
    auto const end = rest.find('\0');
    hasEnd = end != std::string_view::npos;
    Record record{.type = fields[0].empty() ? '\t' : fields[0][0],
                  .size = number(fields[1], 10),
                  .mtime = number(fields[2].substr(0, fields[2].find('.')), 10),
                  .mode = static_cast<std::uint32_t>(number(fields[3], 8)),
                  .path = std::string(rest.substr(0, end))};
    rest.remove_prefix(hasEnd ? end + 1 : rest.size());
    return record;
}

/// Whether the name, or a part of what stands before it, leads out of its folder.
bool leadsElsewhere(std::string const &path)
{
    auto const slash = path.rfind('/');
    std::vector<std::string> parts{path.substr(slash + 1)};
    if (slash != std::string::npos && slash > 0) {
        std::istringstream folder(path.substr(0, slash) + "/.part"); // so that an empty last part is read as one
        for (std::string part; std::getline(folder, part, '/');)
            parts.push_back(part);
    }
    return std::ranges::any_of(parts, [](auto const &part) { return part.empty() || part == "." || part == ".."; });
}

/// All that are entries, by the path of their folder, in the order of the stream.
std::map<std::string, std::vector<Record>> recordsOf(std::string_view stream, Settings const &settings)
{
    std::map<std::string, std::vector<Record>> folders;
    while (!stream.empty()) {
        bool hasEnd = false;
        auto record = takeRecord(stream, hasEnd);
        if (!record || (!hasEnd && settings.completeness == Completeness::truncated))
            break;
        auto const slash = record->path.rfind('/');
        if (leadsElsewhere(record->path))
            continue;
        auto folder = settings.root;
        if (slash != std::string::npos && slash > 0)
            folder += (settings.root == "/" ? "" : "/") + record->path.substr(0, slash);
        record->path.erase(0, slash + 1);
        folders[folder].push_back(std::move(*record));
    }
    return folders;
}

void checkEntry(DirectorySnapshot const &listing, Entry const &entry, Record const &record)
{
    check(listing.nameBytes(entry) == record.path, "a name is another one");
    check(entry.kind == entryKind(static_cast<std::uint8_t>(record.type)), "a kind is another one");
    check(entry.size == static_cast<std::int64_t>(record.size), "a size is another one");
    check(entry.mtime == static_cast<std::int64_t>(record.mtime), "a time is another one");
    check(entry.mode == static_cast<std::uint16_t>(record.mode), "a mode is another one");
}

void checkListings(std::string const &stream, Settings const &settings)
{
    auto const parsed = ListingParser::parse(std::make_shared<std::string const>(stream), settings.root,
                                             settings.maxDepth, {}, settings.completeness);
    auto const expected = recordsOf(stream, settings);
    check(parsed.contains(settings.root), "the root has no listing");
    for (auto const &[path, records] : expected)
        check(parsed.contains(path), "a folder has no listing");
    for (auto const &[path, listing] : parsed) {
        check(listing.path() == path, "a listing has another path than its key");
        check(!listing.truncated() || settings.completeness == Completeness::truncated, "a whole listing is cut");
        auto const found = expected.find(path);
        auto const records = found == expected.end() ? std::vector<Record>() : found->second;
        check(listing.count() == records.size(), "a listing has more or fewer entries than its records");
        for (std::size_t index = 0; index < records.size(); ++index)
            checkEntry(listing, listing.entries()[index], records[index]);
    }
    check(settings.completeness == Completeness::whole || parsed.at(settings.root).truncated(), "a cut root is whole");
}

/// A stream that is read while it comes means the same, wherever it is cut. Each piece is longer by one byte, so that
/// short streams are cut everywhere.
void checkPieces(std::string const &stream, Settings const &settings)
{
    auto const shared = std::make_shared<std::string const>(stream);
    auto const whole = ListingParser::parse(shared, settings.root, settings.maxDepth, {}, settings.completeness);
    ListingScan scan(settings.root, settings.maxDepth);
    std::size_t end = 0;
    for (std::size_t piece = 1; end < stream.size(); end += piece++) {
        // At another address each time, as in a buffer that grows.
        std::string const come = stream.substr(0, end);
        if (piece % 2 == 0)
            scan.advance(come);
        else
            check(scan.part(come, {}).truncated(), "a part is whole");
    }
    auto const inPieces = scan.finish(shared, {}, settings.completeness);
    check(std::ranges::equal(whole, inPieces,
                             [](auto const &one, auto const &other) {
                                 return one.first == other.first &&
                                        one.second.truncated() == other.second.truncated() &&
                                        std::ranges::equal(one.second.entries(), other.second.entries());
                             }),
          "a listing that was read in pieces is another one");
}

} // namespace
} // namespace tw

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size == 0)
        return 0;
    std::string const stream(reinterpret_cast<char const *>(data) + 1, size - 1);
    tw::checkListings(stream, tw::settingsOf(data[0]));
    tw::checkPieces(stream, tw::settingsOf(data[0]));
    return 0;
}
