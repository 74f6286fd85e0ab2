#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Small files of the program's own that nobody but its user may read: they have that mode from the first moment on.
///
/// All of it blocks, but never on a pipe or a device that somebody has put in the file's place.
/// Errors: told by the answer only; these are files that the program works without.
namespace tw::PrivateFile {

/// Makes the folder that the file lies in, with those above it. One that is there keeps its mode.
bool makeFolderOf(std::string const &file);

/// All of it, if it can be read and has at most `maxBytes`.
std::optional<std::string> read(std::string const &file, std::size_t maxBytes);

/// The last `bytes` of a file that has more. Nothing for one that has not.
std::optional<std::string> readEnd(std::string const &file, std::size_t bytes);

/// Appends in one write, so that two processes do not write into each other's lines. Makes the file if need be.
bool append(std::string const &file, std::string_view text);

/// In one step: whoever reads the file finds the old text or the new one.
bool replace(std::string const &file, std::string_view text);

} // namespace tw::PrivateFile
