#include "Tarnwick/Operations/CopiedPath.h"

#include "TWCore/Model/WindowsPath.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Format/Fmt.h"

#include <algorithm>
#include <vector>

namespace tw::CopiedPath {

namespace {

std::string_view lastPartOf(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string_view folderOf(std::string_view path)
{
    auto const slash = path.rfind('/');
    return slash == std::string_view::npos || slash == 0 ? std::string_view("/") : path.substr(0, slash);
}

std::vector<std::string_view> partsOf(std::string_view path)
{
    std::vector<std::string_view> parts;
    while (!path.empty()) {
        auto const end = std::min(path.find('/'), path.size());
        if (end > 0)
            parts.push_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return parts;
}

std::string relativeToHome(std::string_view path, Place const &place)
{
    auto const &home = place.homeFolder;
    auto const isBelow = !home.empty() && home != "/" && path.starts_with(home) &&
                         (path.size() == home.size() || path[home.size()] == '/');
    if (place.connection != localConnection || !isBelow)
        return WindowsPath::display(path);
    return "~" + std::string(path.substr(home.size()));
}

} // namespace

std::optional<Style> styleOf(Command command)
{
    switch (command) {
    case Command::copyName:
        return Style::name;
    case Command::copyNameWithoutExtension:
        return Style::nameWithoutExtension;
    case Command::copyFullPath:
        return Style::fullPath;
    case Command::copyHostAndPath:
        return Style::hostAndPath;
    case Command::copyRelativePath:
        return Style::relativeToOtherPane;
    case Command::copyHomePath:
        return Style::relativeToHome;
    case Command::copyEnclosingFolder:
        return Style::enclosingFolder;
    default:
        return std::nullopt;
    }
}

std::string render(std::string_view path, Style style, Place const &place)
{
    switch (style) {
    case Style::name:
        return std::string(lastPartOf(path));
    case Style::nameWithoutExtension:
        return std::string(Fmt::splitExtension(lastPartOf(path), Fmt::IsDirectory::no).base);
    case Style::fullPath:
        break;
    case Style::hostAndPath:
        if (place.connection != localConnection)
            return place.connection + ':' + WindowsPath::display(path);
        break;
    case Style::relativeToOtherPane:
        return relativePath(place.otherPath, path);
    case Style::relativeToHome:
        return relativeToHome(path, place);
    case Style::enclosingFolder:
        return WindowsPath::display(folderOf(path));
    }
    return WindowsPath::display(path);
}

std::string relativePath(std::string_view from, std::string_view to)
{
    auto const start = partsOf(from);
    auto const end = partsOf(to);
    auto const [leaves, goesOn] = std::ranges::mismatch(start, end);
    std::string way;
    auto const add = [&way](std::string_view part) {
        if (!way.empty())
            way += '/';
        way += part;
    };
    for (auto each = leaves; each != start.end(); ++each)
        add("..");
    for (auto each = goesOn; each != end.end(); ++each)
        add(*each);
    return way.empty() ? "." : way;
}

} // namespace tw::CopiedPath
