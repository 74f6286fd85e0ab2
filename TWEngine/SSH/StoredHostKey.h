#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The key that a known_hosts file has for a host, as ssh names its place: "FILE:LINE".
namespace tw::StoredHostKey {

/// No file of a person is larger.
inline constexpr std::size_t maxFileBytes = 4U << 20U;

/// The fingerprint of the key in a line, such as "SHA256:…" without padding; empty if there is no key in it.
std::string fingerprintIn(std::string_view line);

/// The fingerprint of the key at `place`; empty if it cannot be read. Reads nothing but a file.
///
/// Threads: blocks as long as the file does.
std::string fingerprintAt(std::string_view place);

} // namespace tw::StoredHostKey
