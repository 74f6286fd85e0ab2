#include "TWCore/Archives/ArchiveTree.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_map>

namespace tw {

namespace {

/// As a plain folder and a plain file have it (octal 40755 and 100644).
constexpr std::uint16_t folderMode = 16877;
constexpr std::uint16_t fileMode = 33188;

/// The part of a path before its last "/", with "/" for the root.
std::string_view parentOf(std::string_view path)
{
    auto const slash = path.rfind('/');
    return path.substr(0, std::max<std::size_t>(slash, 1));
}

std::string_view nameOf(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

/// The path from the root on, without parts that change nothing; nothing if it is too long or leads out of its folder.
std::optional<std::string> placeOf(std::string_view path)
{
    std::string place;
    if (path.size() > ArchiveTree::longestPath)
        return std::nullopt;
    place.reserve(path.size() + 1);
    while (!path.empty()) {
        auto const end = std::min(path.find('/'), path.size());
        auto const part = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (part == "..")
            return std::nullopt;
        if (!part.empty() && part != ".")
            place.append(1, '/').append(part);
    }
    return place.empty() ? std::nullopt : std::optional(std::move(place));
}

/// A date that no tool means is as good as none.
std::int64_t wholeSeconds(double time)
{
    constexpr double largest = 1e15;
    return std::abs(time) < largest ? static_cast<std::int64_t>(std::floor(time)) : 0;
}

class Builder {
public:
    explicit Builder(std::size_t mostPathBytes) : pathLimit(mostPathBytes) { add("/"); }

    /// False, with nothing done, if there is no room.
    bool take(std::string const &place, ArchiveEntry const &entry)
    {
        if (!hasRoomFor(place))
            return false;
        auto const parent = ensureDirectory(parentOf(place));
        if (entry.isDirectory)
            ensureDirectory(place);
        addChild(parent, nameOf(place), entry.isDirectory, entry.size, wholeSeconds(entry.mtime));
        return true;
    }

    Listings listings(std::chrono::system_clock::time_point now) &&
    {
        auto const storage = std::make_shared<std::string const>(std::string(names));
        names = {};
        Listings listings;
        for (auto &[path, index] : places)
            listings.emplace(
                path, DirectorySnapshot(path, storage, ordered(*storage, std::move(children[index])), now, false));
        return listings;
    }

private:
    struct PathHash {
        using is_transparent = void;

        std::size_t operator()(std::string_view path) const noexcept { return std::hash<std::string_view>()(path); }
    };

    /// The names of missing folders and of the member go into one storage, whose offsets have 32 bits.
    bool hasRoomFor(std::string const &place) const
    {
        constexpr std::size_t longestStorage = std::numeric_limits<std::uint32_t>::max();
        return names.size() + 2 * place.size() <= longestStorage && pathBytes < pathLimit;
    }

    std::size_t add(std::string_view path)
    {
        pathBytes += path.size();
        places.emplace(path, children.size());
        children.emplace_back();
        return children.size() - 1;
    }

    /// The members of one folder mostly stand together, so the last folder is asked first.
    std::size_t ensureDirectory(std::string_view path)
    {
        if (path == lastPath)
            return lastIndex;
        auto const known = places.find(path);
        auto const index = known != places.end() ? known->second : make(path);
        lastPath = path;
        return lastIndex = index;
    }

    /// With all missing folders above it, the uppermost one first.
    std::size_t make(std::string_view path)
    {
        std::vector<std::string_view> missing;
        auto above = path;
        auto known = places.end();
        for (; known == places.end(); known = places.find(above)) {
            missing.push_back(above);
            above = parentOf(above);
        }
        auto parent = known->second;
        for (; !missing.empty(); missing.pop_back()) {
            addChild(parent, nameOf(missing.back()), true, 0, 0);
            parent = add(missing.back());
        }
        return parent;
    }

    /// Beside an earlier child of the same name, which loses against it at the end.
    void addChild(std::size_t parent, std::string_view name, bool isDirectory, std::int64_t size, std::int64_t mtime)
    {
        children[parent].push_back({.nameOffset = static_cast<std::uint32_t>(names.size()),
                                    .nameLength = static_cast<std::uint32_t>(name.size()),
                                    .size = isDirectory ? 0 : size,
                                    .mtime = mtime,
                                    .mode = isDirectory ? folderMode : fileMode,
                                    .kind = isDirectory ? EntryKind::directory : EntryKind::file});
        names += name;
    }

    /// In the order of the names. Of one name only the last stays, whose name stands last in the storage.
    static std::vector<Entry> ordered(std::string_view storage, std::vector<Entry> rows)
    {
        auto const nameOf = [&](Entry const &row) { return storage.substr(row.nameOffset, row.nameLength); };
        std::ranges::sort(rows, [&](Entry const &a, Entry const &b) {
            auto const order = nameOf(a).compare(nameOf(b));
            return order != 0 ? order < 0 : a.nameOffset > b.nameOffset;
        });
        auto const repeated = std::ranges::unique(rows, {}, nameOf);
        rows.erase(repeated.begin(), repeated.end());
        return rows;
    }

    std::size_t const pathLimit;
    std::unordered_map<std::string, std::size_t, PathHash, std::equal_to<>> places;
    std::vector<std::vector<Entry>> children; ///< of each folder, in the order of the members
    std::size_t pathBytes = 0;                ///< of all folders
    std::string names;
    std::string lastPath;
    std::size_t lastIndex = 0;
};

} // namespace

ArchiveTree ArchiveTree::build(std::vector<ArchiveEntry> const &entries, std::chrono::system_clock::time_point now,
                               std::size_t pathLimit)
{
    ArchiveTree tree;
    Builder builder(pathLimit);
    for (auto const &entry : entries) {
        auto const place = placeOf(entry.path);
        if (!place || !builder.take(*place, entry))
            ++tree.leftOut;
    }
    tree.folders = std::move(builder).listings(now);
    return tree;
}

} // namespace tw
