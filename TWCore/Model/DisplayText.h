#pragma once

#include <string>
#include <string_view>

namespace tw {

/// Bytes as text for display: UTF-8, with a replacement character (U+FFFD) for each sequence that is none.
///
/// A sequence that breaks off counts as one; every other byte that cannot stand where it stands counts alone.
/// Different bytes may come out alike, so what is meant for the file system never goes through here.
std::string repaired(std::string_view bytes);

/// The same, with every control character shown as a sign, so that the text is one line wherever it is shown: by its
/// own symbol where Unicode has one, by that of a new line for the other line ends, else by the replacement character.
std::string onOneLine(std::string_view bytes);

/// The same, with a replacement character also for what takes no place of its own or turns the direction of the text
/// around it. For names that tell whom one talks to, such as a host's: two that look alike are alike.
std::string withNothingHidden(std::string_view bytes);

} // namespace tw
