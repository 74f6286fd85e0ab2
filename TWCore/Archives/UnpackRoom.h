#pragma once

#include "TWCore/Archives/ArchiveEntry.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// How much an archive unpacks to, and how much is too much: 42 KB can be an archive of petabytes.
namespace tw::UnpackRoom {

/// No archive that people make for each other is larger.
inline constexpr std::int64_t mostUnasked = std::int64_t{100} << 30U;

/// More than this many times the free space cannot be a mistake about a few files.
inline constexpr std::int64_t mostTimesFree = 10;

bool isTooMuch(std::int64_t bytes, std::optional<std::int64_t> freeBytes);

/// The sizes of all members, at most the largest number.
std::int64_t sumOf(std::span<ArchiveEntry const> entries);

/// What an archive of that name and size cannot exceed; nothing if only its listing can tell.
std::optional<std::int64_t> boundOf(std::string_view name, std::int64_t archiveBytes);

/// The available bytes in the output of `df -Pk` for one folder.
std::optional<std::int64_t> freeIn(std::string_view dfOutput);

/// "4.5 PiB", for sentences.
std::string inWords(std::int64_t bytes);

} // namespace tw::UnpackRoom
