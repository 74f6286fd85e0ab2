#include "TWEngine/Runtime/MountTable.h"

#include <charconv>

namespace tw {

namespace {

/// The next word of a line, which is shortened by it.
std::string_view takeWord(std::string_view &line)
{
    auto const end = line.find(' ');
    auto const word = line.substr(0, end);
    line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
    return word;
}

/// The kernel writes blanks, tabs, line feeds and backslashes as a backslash and three octal digits.
std::string unescaped(std::string_view text)
{
    constexpr std::size_t digits = 3;
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        unsigned byte = 0;
        auto const *const from = text.data() + at + 1;
        if (text[at] == '\\' && at + digits < text.size() &&
            std::from_chars(from, from + digits, byte, 8).ptr == from + digits && byte <= 0xff) {
            result += static_cast<char>(byte);
            at += digits;
        } else {
            result += text[at];
        }
    }
    return result;
}

} // namespace

MountTable MountTable::parse(std::string_view mountinfo)
{
    MountTable table;
    while (!mountinfo.empty()) {
        auto const end = mountinfo.find('\n');
        auto line = mountinfo.substr(0, end);
        mountinfo.remove_prefix(end == std::string_view::npos ? mountinfo.size() : end + 1);

        auto const number = takeWord(line);
        takeWord(line); // the mount that it is mounted on
        takeWord(line); // the device
        takeWord(line); // what of the file system is mounted
        auto const point = unescaped(takeWord(line));
        MountId id = unknown;
        auto const parsed = std::from_chars(number.data(), number.data() + number.size(), id);
        if (parsed.ec == std::errc() && parsed.ptr == number.data() + number.size() && point.starts_with('/'))
            table.mounts.insert_or_assign(point, id); // a later line is a later mount
    }
    return table;
}

MountTable::MountId MountTable::mountOf(std::string_view path) const
{
    while (path.starts_with('/')) {
        if (auto const found = mounts.find(path); found != mounts.end())
            return found->second;
        if (path == "/")
            break;
        auto const slash = path.rfind('/');
        path = path.substr(0, std::max<std::size_t>(slash, 1));
    }
    return unknown;
}

std::vector<std::string> MountTable::mountPointsIn(std::string_view folder) const
{
    auto const below = std::string(folder == "/" ? "" : folder) + '/';
    std::vector<std::string> names;
    for (auto each = mounts.upper_bound(below); each != mounts.end() && each->first.starts_with(below); ++each) {
        auto const name = each->first.substr(below.size());
        if (!name.contains('/'))
            names.push_back(name);
    }
    return names;
}

} // namespace tw
