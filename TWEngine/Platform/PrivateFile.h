#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Files of the program that only its user may read. They have the mode 0600 from the moment they exist.
///
/// Every function blocks, but never on a pipe or a device that takes the place of the file.
/// Errors: returned as false or as nothing; the program works without these files.
namespace tw::PrivateFile {

/// Makes the folder of the file, and the folders above it, with the mode 0700. An existing folder keeps its mode.
bool makeFolderOf(std::string const &file);

/// Makes an empty file, or restricts an existing one to the user. False if `file` is a link or no plain file: a link
/// could lead to a file of another program.
bool make(std::string const &file);

/// The whole content, if the file can be read and has at most `maxBytes`.
std::optional<std::string> read(std::string const &file, std::size_t maxBytes);

/// The last `bytes` of the file. Nothing if the file has no more than `bytes`.
std::optional<std::string> readEnd(std::string const &file, std::size_t bytes);

/// Appends in one write, so that two processes do not write into each other's lines. Makes the file if it is missing.
bool append(std::string const &file, std::string_view text);

/// Replaces the content in one step: a reader finds either the old text or the new text.
bool replace(std::string const &file, std::string_view text);

} // namespace tw::PrivateFile
