#include "TWCore/Archives/UnpackRoom.h"

#include "TWCore/Model/LowerCased.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace tw::UnpackRoom {

namespace {

constexpr auto largest = std::numeric_limits<std::int64_t>::max();

/// Deflate makes at most 1032 bytes of one.
constexpr std::int64_t mostOfDeflate = 1032;

std::string_view takeField(std::string_view &line)
{
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    auto const field = line.substr(0, line.find_first_of(" \t"));
    line.remove_prefix(field.size());
    return field;
}

} // namespace

bool isTooMuch(std::int64_t bytes, std::optional<std::int64_t> freeBytes)
{
    return bytes > mostUnasked || (freeBytes && bytes / mostTimesFree > *freeBytes);
}

std::int64_t sumOf(std::span<ArchiveEntry const> entries)
{
    std::int64_t sum = 0;
    for (auto const &entry : entries)
        sum += std::clamp<std::int64_t>(entry.size, 0, largest - sum);
    return sum;
}

std::optional<std::int64_t> boundOf(std::string_view name, std::int64_t archiveBytes)
{
    auto const lower = lowerCased(name);
    if (lower.ends_with(".tar"))
        return archiveBytes; // beside the holes of sparse files, which take no room
    if (lower.ends_with(".tar.gz") || lower.ends_with(".tgz"))
        return archiveBytes > largest / mostOfDeflate ? largest : archiveBytes * mostOfDeflate;
    return std::nullopt;
}

std::optional<std::int64_t> freeIn(std::string_view dfOutput)
{
    constexpr std::int64_t blockBytes = 1024;
    while (dfOutput.ends_with('\n'))
        dfOutput.remove_suffix(1);
    auto line = dfOutput.substr(dfOutput.rfind('\n') + 1); // all of it if there is one line
    // The name of the device and the mount point may have blanks; the share in use is the only field of its form.
    for (std::string_view before, field = takeField(line); !field.empty(); before = field, field = takeField(line)) {
        std::int64_t blocks = 0;
        auto const [end, error] = std::from_chars(before.data(), before.data() + before.size(), blocks);
        bool const isNumber = error == std::errc() && end == before.data() + before.size();
        if (field.ends_with('%') && isNumber && blocks >= 0 && blocks <= largest / blockBytes)
            return blocks * blockBytes;
    }
    return std::nullopt;
}

std::string inWords(std::int64_t bytes)
{
    constexpr std::array units{"bytes", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    constexpr std::int64_t step = 1024;
    std::size_t unit = 0;
    std::int64_t tenths = 0;
    for (; bytes >= step; ++unit) {
        tenths = bytes % step * 10 / step;
        bytes /= step;
    }
    auto text = std::to_string(bytes);
    if (unit > 0 && bytes < 10)
        text += "." + std::to_string(tenths);
    return text + " " + units[unit];
}

} // namespace tw::UnpackRoom
