#pragma once

#include <optional>
#include <string_view>

namespace tw {

/// The kinds of archive that are packed and unpacked.
enum class ArchiveFormat { tarGz, zip, sevenZip };

/// The name that a format is stored under: "tarGz", "zip" or "sevenZip".
std::string_view rawText(ArchiveFormat format) noexcept;

/// The format as shown to the user, and the suggested extension of a file name: "tar.gz", "zip" or "7z".
std::string_view displayName(ArchiveFormat format) noexcept;

/// The format that a file name stands for, in any case of its letters; nothing for a name of no archive. A plain
/// ".tar" counts as tarGz: `tar` lists and unpacks both in the same way.
std::optional<ArchiveFormat> detectArchiveFormat(std::string_view name);

} // namespace tw
