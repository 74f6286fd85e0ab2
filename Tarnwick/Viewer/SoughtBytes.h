#pragma once

#include "TWCore/Model/TextDecoding.h"
#include "Tarnwick/Viewer/ViewerMode.h"

#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// Longer ones are not looked for.
inline constexpr std::size_t mostSoughtBytes = 1024;

/// The bytes that somebody looks for: the text in the encoding of the file; in a hex dump, pairs of hexadecimal digits
/// are bytes, and anything else is a text too. Nothing if the file cannot have them.
std::optional<std::string> soughtBytes(std::string_view typed, ViewerMode mode, TextDecoding::Encoding encoding);

} // namespace tw
