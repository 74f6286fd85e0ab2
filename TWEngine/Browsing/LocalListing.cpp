#include "TWEngine/Browsing/LocalListing.h"

#include "TWEngine/Browsing/LocalProviderError.h"

#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include <dirent.h>

namespace tw {

namespace {

/// Small, so that threads have parts enough to share and the first measurement is soon there; large enough for the
/// handing out to cost nothing.
constexpr std::size_t entriesOfPart = 128;

/// 128 names of ordinary length.
constexpr std::size_t nameBytesOfPart = 4096;

/// An entry points into the storage with 32 bits.
constexpr std::size_t maxNameBytes = std::numeric_limits<std::uint32_t>::max();

struct CloseDirectory {
    void operator()(DIR *directory) const { closedir(directory); }
};

using Directory = std::unique_ptr<DIR, CloseDirectory>;

EntryKind kindOfRecord(unsigned char type)
{
    switch (type) {
    case DT_FIFO:
        return EntryKind::fifo;
    case DT_CHR:
        return EntryKind::charDev;
    case DT_DIR:
        return EntryKind::directory;
    case DT_BLK:
        return EntryKind::blockDev;
    case DT_REG:
        return EntryKind::file;
    case DT_LNK:
        return EntryKind::symlink;
    case DT_SOCK:
        return EntryKind::socket;
    default:
        return EntryKind::unknown;
    }
}

bool isListed(std::string_view name)
{
    return !name.empty() && name != "." && name != "..";
}

Directory openNow(std::string const &path)
{
    // The system would take such a path for the part before the NUL, and list another folder.
    if (path.contains('\0'))
        throw LocalProviderError::CannotOpen(path, ENOENT);
    Directory directory(opendir(path.c_str()));
    if (!directory)
        throw LocalProviderError::CannotOpen(path, errno);
    return directory;
}

/// Null at the end of the directory.
dirent const *nextRecord(DIR *directory, std::string const &path)
{
    errno = 0;
    auto const *const record = readdir(directory);
    // A part that is taken for the whole would say that the rest is gone.
    if (!record && errno != 0)
        throw LocalProviderError::CannotOpen(path, errno);
    return record;
}

void append(LocalAttributes::Part &part, std::string_view name, EntryKind kind)
{
    if (part.entries.empty()) {
        part.entries.reserve(entriesOfPart);
        part.names.reserve(nameBytesOfPart);
    }
    Entry entry;
    entry.nameOffset = static_cast<std::uint32_t>(part.names.size());
    entry.nameLength = static_cast<std::uint32_t>(name.size());
    entry.kind = kind;
    part.names += name;
    part.entries.push_back(entry);
}

struct Rows {
    std::string names;
    std::vector<Entry> entries;
};

/// One storage, of the exact size: a listing is held for long.
Rows joined(std::deque<LocalAttributes::Part> parts)
{
    std::size_t nameBytes = 0;
    std::size_t count = 0;
    for (auto const &part : parts) {
        nameBytes += part.names.size();
        count += part.entries.size();
    }
    Rows rows;
    rows.names.reserve(nameBytes);
    rows.entries.reserve(count);
    for (; !parts.empty(); parts.pop_front()) {
        auto const before = static_cast<std::uint32_t>(rows.names.size());
        rows.names += parts.front().names;
        for (auto entry : parts.front().entries) {
            entry.nameOffset += before;
            rows.entries.push_back(entry);
        }
    }
    return rows;
}

} // namespace

DirectorySnapshot readLocalDirectory(std::string const &path, LocalAttributes::Known const &known,
                                     HelperThreads::Budget &helpers, std::stop_token const &stop)
{
    auto const directory = openNow(path);
    LocalAttributes attributes(dirfd(directory.get()), known, helpers, stop);
    LocalAttributes::Part part;
    std::size_t nameBytes = 0;
    bool truncated = false;
    while (auto const *const record = nextRecord(directory.get(), path)) {
        std::string_view const name = record->d_name;
        if (!isListed(name))
            continue;
        nameBytes += name.size();
        truncated = nameBytes > maxNameBytes;
        if (truncated)
            break;
        append(part, name, kindOfRecord(record->d_type));
        if (part.entries.size() == entriesOfPart)
            attributes.add(std::exchange(part, {}));
    }
    attributes.add(std::move(part));
    auto rows = joined(attributes.finish());
    return {path, std::make_shared<std::string const>(std::move(rows.names)), std::move(rows.entries),
            std::chrono::system_clock::now(), truncated};
}

} // namespace tw
