#include "TWCore/Model/ListingScan.h"

#include "TWCore/Check.h"

#include <cstring>
#include <limits>

namespace tw {

namespace {

/// A record without an end is searched for it again and again. So `advance` waits for that part more of the stream:
/// then all searches together cost some passes, whatever a host sends.
constexpr std::size_t growthDivisor = 8;

constexpr char recordSeparator = '\0';
constexpr char fieldSeparator = '\t';

std::string joined(std::string_view root, std::string_view relative)
{
    std::string path(root == "/" ? "" : root);
    path += '/';
    path += relative;
    return path;
}

/// Whether `path` is `below` or one of the folders that lead to it. Both are normalised.
bool isAtOrAbove(std::string_view path, std::string_view below)
{
    return below.starts_with(path) && (path == "/" || below.size() == path.size() || below[path.size()] == '/');
}

/// Reads numbers and fields from a stream, and says when it has run out.
class FieldReader {
public:
    explicit FieldReader(std::string_view bytes) : next(bytes.data()), end(next + bytes.size()) {}

    bool atEnd() const { return next == end; }

    char const *position() const { return next; }

    void skipLineEnds()
    {
        while (next != end && (*next == '\n' || *next == '\r'))
            ++next;
    }

    /// Behind the next field separator. False: there is none.
    bool skipField()
    {
        auto const length = static_cast<std::size_t>(end - next);
        auto const *const found = length == 0 ? nullptr : std::memchr(next, fieldSeparator, length);
        next = found ? static_cast<char const *>(found) + 1 : end;
        return found != nullptr;
    }

    /// The digits of a field, whatever else is in it, up to `stop` or the field's end. False: the field has no end.
    template <unsigned Base, class Number>
    bool readNumber(Number &value, char stop = fieldSeparator)
    {
        value = 0;
        for (; next != end; ++next) {
            auto const digit = static_cast<unsigned char>(*next) - static_cast<unsigned>('0');
            if (digit < Base)
                value = value * Base + digit;
            else if (*next == fieldSeparator || *next == stop)
                return skipField();
        }
        return false;
    }

    /// Up to the record's end and behind it. A record without one ends with the stream.
    std::string_view readPath(bool &isComplete)
    {
        auto const length = static_cast<std::size_t>(end - next);
        auto const *const start = next;
        auto const *const found = length == 0 ? nullptr : std::memchr(next, recordSeparator, length);
        isComplete = found != nullptr;
        auto const *const stop = found ? static_cast<char const *>(found) : end;
        next = found ? stop + 1 : end;
        return {start, stop};
    }

private:
    char const *next;
    char const *const end;
};

/// The four fields before the path. False: the stream ended in them.
bool readFields(FieldReader &reader, Entry &entry)
{
    reader.skipLineEnds();
    if (reader.atEnd())
        return false;
    entry.kind = entryKind(static_cast<std::uint8_t>(*reader.position()));
    std::uint64_t size = 0;
    std::uint64_t mtime = 0;
    std::uint32_t mode = 0;
    if (!reader.skipField() || !reader.readNumber<10>(size) || !reader.readNumber<10>(mtime, '.') ||
        !reader.readNumber<8>(mode))
        return false;
    entry.size = static_cast<std::int64_t>(size);
    entry.mtime = static_cast<std::int64_t>(mtime);
    entry.mode = static_cast<std::uint16_t>(mode);
    return true;
}

/// No folder has an entry of such a name. A host that sends one anyway may mean to have a file of another folder
/// copied, or removed.
bool leadsElsewhere(std::string_view name)
{
    return name.empty() || name == "." || name == "..";
}

bool hasPartThatLeadsElsewhere(std::string_view directory)
{
    while (!directory.empty()) {
        auto const slash = directory.find('/');
        if (leadsElsewhere(directory.substr(0, slash)) || slash + 1 == directory.size())
            return true;
        directory.remove_prefix(slash == std::string_view::npos ? directory.size() : slash + 1);
    }
    return false;
}

} // namespace

ListingScan::ListingScan(std::string_view rootPath, int depth)
    : root(ListingParser::normalize(rootPath)), maxDepth(depth)
{
    discover(root);
}

void ListingScan::advance(std::string_view stream)
{
    auto const isNew = stream.size() < position;
    if (isNew || stream.size() - position > stream.size() / growthDivisor)
        read(stream, LastRecord::waitsForItsEnd);
}

DirectorySnapshot ListingScan::part(std::string_view stream, Time fetchedAt)
{
    read(stream, LastRecord::waitsForItsEnd);
    return {root, std::make_shared<std::string const>(stream.substr(0, position)), discover(root), fetchedAt, true};
}

std::map<std::string, DirectorySnapshot> ListingScan::finish(NameStorage stream, Time fetchedAt,
                                                             Completeness completeness)
{
    check(stream->size() <= std::numeric_limits<std::uint32_t>::max(), "a listing response is over 4 GiB");
    auto const isCut = completeness == Completeness::truncated;
    read(*stream, isCut ? LastRecord::isDroppedWithoutEnd : LastRecord::needsNoEnd);
    auto const hasEntries = [](auto const *folder) { return !folder->second.empty(); };
    auto const reached = order.rend() - std::ranges::find_if(order.rbegin(), order.rend(), hasEntries);
    std::map<std::string, DirectorySnapshot> snapshots;
    auto last = snapshots.end();
    for (std::ptrdiff_t index = 0; index < std::ssize(order); ++index) {
        auto &[path, entries] = *order[static_cast<std::size_t>(index)];
        bool const mayBeShort = index >= reached || isAtOrAbove(path, order.back()->first);
        // Walked from the top down, a folder mostly comes right behind the one before it, in the map too.
        auto const behind = last == snapshots.end() ? last : std::next(last);
        last = snapshots.emplace_hint(
            behind, path, DirectorySnapshot(path, stream, std::move(entries), fetchedAt, isCut && mayBeShort));
    }
    return snapshots;
}

void ListingScan::read(std::string_view stream, LastRecord lastRecord)
{
    if (stream.size() < position)
        startAgain();
    FieldReader reader(stream.substr(position));
    while (!reader.atEnd()) {
        Entry entry;
        if (!readFields(reader, entry))
            break;
        bool isComplete = true;
        auto const path = reader.readPath(isComplete);
        if (!isComplete && lastRecord != LastRecord::needsNoEnd)
            break;
        if (!path.empty())
            take(path, static_cast<std::size_t>(path.data() - stream.data()), entry);
        position = static_cast<std::size_t>(reader.position() - stream.data());
    }
}

void ListingScan::take(std::string_view path, std::size_t offset, Entry entry)
{
    auto const slash = path.rfind('/');
    auto const isInRoot = slash == std::string_view::npos;
    auto const name = isInRoot ? path : path.substr(slash + 1);
    if (leadsElsewhere(name))
        return;
    enterRun(isInRoot ? std::string_view() : path.substr(0, slash));
    if (isRunDropped)
        return;
    entry.nameOffset = static_cast<std::uint32_t>(offset + path.size() - name.size());
    entry.nameLength = static_cast<std::uint32_t>(name.size());
    if (!runEntries)
        runEntries = &discover(runPath);
    runEntries->push_back(entry);
    if (entry.isDirectory() && isReached())
        discover(joined(root, path));
}

void ListingScan::enterRun(std::string_view directory)
{
    if (isInRun && directory == runDirectory)
        return;
    isInRun = true;
    isRunDropped = hasPartThatLeadsElsewhere(directory);
    runDirectory = directory;
    runPath = directory.empty() ? root : joined(root, directory);
    runEntries = nullptr;
}

/// Whether the scan looked inside the folders of the current run.
bool ListingScan::isReached() const
{
    if (runDirectory.empty())
        return maxDepth >= 2;
    return std::ranges::count(runDirectory, '/') + 2 < maxDepth;
}

void ListingScan::startAgain()
{
    position = 0;
    folders.clear();
    order.clear();
    isInRun = false;
    runEntries = nullptr;
    discover(root);
}

std::vector<Entry> &ListingScan::discover(std::string const &path)
{
    auto const [found, isNew] = folders.try_emplace(path);
    if (isNew)
        order.push_back(&*found);
    return found->second;
}

} // namespace tw
