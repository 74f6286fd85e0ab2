#pragma once

#include <string>
#include <string_view>

/// The small picture of itself that a camera puts into a photograph (Exif).
namespace tw::EmbeddedPicture {

/// That picture as a JPEG of its own, which is turned as the photograph is. `jpeg` is the beginning of the photograph,
/// and need not be what it says. Empty: there is no such picture in it.
std::string in(std::string_view jpeg);

} // namespace tw::EmbeddedPicture
