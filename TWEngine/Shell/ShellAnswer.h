#pragma once

#include "TWCore/Shell/ShellDialect.h"

#include <cstdint>

/// What the payloads of responses mean. Listings are read by ListingParser.
namespace tw::ShellAnswer {

/// Bytes; 0 for a file that is not there, or not to be seen.
std::int64_t fileSize(std::string_view payload);

/// The bytes of a file that were read; none if there were none, or if what came is not what the host sends.
std::string fileBytes(ShellDialect dialect, std::string payload);

} // namespace tw::ShellAnswer
