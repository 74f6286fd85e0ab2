#pragma once

#include <string>
#include <string_view>

/// Commands for a host's shell that print a short text, which changes with any name, size or time in a folder.
namespace tw::FolderFingerprint {

/// Of what `path` leads to if it ends in "/"; of a link itself otherwise.
std::string posix(std::string_view path);

/// `path` in our own form, "/C:/Users"; "/" is the empty text, where the host lists what it likes.
std::string windows(std::string_view path);

} // namespace tw::FolderFingerprint
