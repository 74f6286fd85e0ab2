#pragma once

#include "Tarnwick/Session/SessionState.h"

#include <string_view>

/// What is kept between two runs, as JSON.
///
/// Paths are bytes and JSON is text: a path that is no UTF-8 has its bytes beside it, in base64.
namespace tw::SessionText {

/// Longer texts are none of ours, and are not decoded. A path has at most 4 KiB.
inline constexpr std::size_t longestSides = 4UL * 1024 * 1024;
inline constexpr std::size_t longestLocations = 1024UL * 1024;

std::string encode(SideStates const &sides);

/// Nothing unless there are exactly two sides with at least one tab each. `active` may be behind the last tab.
std::optional<SideStates> sidesFrom(std::string_view text);

/// A connection whose name is no UTF-8 is left out.
std::string encode(Locations const &locations);

std::optional<Locations> locationsFrom(std::string_view text);

} // namespace tw::SessionText
