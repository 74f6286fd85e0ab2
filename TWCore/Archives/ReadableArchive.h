#pragma once

#include <optional>
#include <string_view>

namespace tw {

/// Which family of programs reads an archive.
enum class ArchiveFamily {
    tar, ///< compressed in whatever way
    zip, ///< also where it has another name, such as .jar
    sevenZip,
    other ///< what bsdtar and 7-Zip read beside these
};

/// The family of an archive that can be opened, from its name in any case of its letters; nothing for any other name.
/// More can be opened than packed, see `detectArchiveFormat`.
std::optional<ArchiveFamily> readableArchive(std::string_view name);

} // namespace tw
