#pragma once

#include <string>
#include <string_view>

namespace tw {

/// Why a folder cannot be listed, for the user: "permission denied", "no such folder", "not a folder", "too many
/// links".
///
/// `systemText` is what the C library says in the C locale. A text without words of its own here is returned with a
/// small first letter, and an empty text as "cannot be read".
std::string folderRefusal(std::string_view systemText);

/// The refusal of a path that is there and is no folder.
inline constexpr std::string_view notAFolder = "not a folder";

} // namespace tw
