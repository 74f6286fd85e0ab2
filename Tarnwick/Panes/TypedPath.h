#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// Where a path that was typed leads: "~" and "~/..." start at `home`, what does not start with "/" at `folder`, and
/// "." and ".." are resolved by their names alone, as a shell does when it changes directory.
///
/// The answer is absolute, without a slash at its end. Nothing for a text without a path in it. Blanks and line ends
/// around the text, as they come with a pasted one, do not count.
std::optional<std::string> typedPath(std::string_view text, std::string_view folder, std::string_view home);

} // namespace tw
