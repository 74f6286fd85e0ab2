#pragma once

#include "TWEngine/SSH/HostSettings.h"

#include <cstddef>
#include <string_view>

/// Reads what `ssh -G` prints.
namespace tw::PrintedSettings {

/// More keys than a host lets a client try.
inline constexpr std::size_t mostIdentityFiles = 16;

/// The settings that ssh prints on standard output. `home` is the folder that stands for "~".
///
/// A control path with characters that an option of ssh would need in quotes counts as not set. The same holds for an
/// identity file with a token that only a connection knows.
HostSettings read(std::string_view printed, std::string_view home);

/// The configuration files that ssh has read, from its log at DEBUG1. Nothing if a name is cut off, as ssh does with
/// long names.
std::optional<std::vector<std::string>> filesIn(std::string_view log);

} // namespace tw::PrintedSettings
