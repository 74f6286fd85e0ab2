#pragma once

#include "Tarnwick/Commands/Command.h"

#include <optional>
#include <string>
#include <string_view>

/// The paths of files as they are put on the clipboard.
namespace tw::CopiedPath {

enum class Style {
    name,
    nameWithoutExtension,
    fullPath,
    hostAndPath, ///< of a file of this machine, its path alone
    relativeToOtherPane,
    relativeToHome, ///< outside the home folder, and on a host, the whole path
    enclosingFolder,
};

/// The style that a command asks for; nothing if it copies no path.
std::optional<Style> styleOf(Command command);

/// Where the file is, and what its path may be relative to.
struct Place {
    std::string connection;
    std::string homeFolder; ///< of this machine
    std::string otherPath;  ///< of the folder in the other pane
};

/// `path` is absolute.
std::string render(std::string_view path, Style style, Place const &place);

/// The way from one folder to a path: "../c/d" from "/a/b" to "/a/c/d", "." where they are the same.
std::string relativePath(std::string_view from, std::string_view to);

} // namespace tw::CopiedPath
