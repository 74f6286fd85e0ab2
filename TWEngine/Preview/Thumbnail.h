#pragma once

#include "TWEngine/Runtime/FileDescriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The small pictures of files that desktops keep for each other, as the Thumbnail Managing Standard of freedesktop.org
/// has them.
namespace tw::Thumbnail {

/// The largest thumbnail of the file at the absolute `path`, open for reading. Only a thumbnail of the version that was
/// changed at `mtime` (seconds since 1970-01-01 UTC) counts; without one, the descriptor is closed. `folder` is the
/// folder of all thumbnails. Blocks.
FileDescriptor find(std::string const &folder, std::string const &path, std::int64_t mtime);

/// A file, as a program that makes thumbnails is asked for it.
struct Question {
    std::string uri;      ///< empty: there is none for this path
    std::string mimeType; ///< empty: unknown
};

/// `beginning` is the first part of the file at the absolute `path`. Blocks.
Question questionAbout(std::string const &path, std::string_view beginning);

/// What a PNG says under `key`, in the texts before its pixels.
std::optional<std::string_view> textIn(std::string_view png, std::string_view key);

} // namespace tw::Thumbnail
