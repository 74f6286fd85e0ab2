#include "TWCore/Model/Entry.h"

namespace tw {

std::optional<EntryKind> entryKindFromRaw(std::uint8_t raw) noexcept
{
    auto const kind = static_cast<EntryKind>(raw);
    switch (kind) {
    case EntryKind::file:
    case EntryKind::directory:
    case EntryKind::symlink:
    case EntryKind::blockDev:
    case EntryKind::charDev:
    case EntryKind::fifo:
    case EntryKind::socket:
    case EntryKind::unknown:
        return kind;
    }
    return std::nullopt;
}

EntryKind entryKind(std::uint8_t byte) noexcept
{
    return entryKindFromRaw(byte).value_or(EntryKind::unknown);
}

EntryKind entryKindOfMode(std::uint32_t mode) noexcept
{
    switch (mode & 0170000U) {
    case 0100000U:
        return EntryKind::file;
    case 0040000U:
        return EntryKind::directory;
    case 0120000U:
        return EntryKind::symlink;
    case 0060000U:
        return EntryKind::blockDev;
    case 0020000U:
        return EntryKind::charDev;
    case 0010000U:
        return EntryKind::fifo;
    case 0140000U:
        return EntryKind::socket;
    default:
        return EntryKind::unknown;
    }
}

} // namespace tw

std::size_t std::hash<tw::Entry>::operator()(tw::Entry const &entry) const noexcept
{
    // The odd multiplier is 2^64 divided by the golden ratio: it spreads neighbouring values over all the bits.
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;
    std::uint64_t hash = 0;
    auto const add = [&hash](std::uint64_t value) {
        hash = (hash ^ value) * spread;
        hash ^= hash >> 32;
    };
    add(entry.nameOffset);
    add(entry.nameLength);
    add(static_cast<std::uint64_t>(entry.size));
    add(static_cast<std::uint64_t>(entry.mtime));
    add(entry.mode);
    add(static_cast<std::uint64_t>(entry.kind));
    return hash;
}
