#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The question beside each listing: can this folder be listed, and why not?
///
/// The resident script prints nothing for a folder that cannot be read, as for one that is empty. Only the answer to
/// this question tells the two apart. It travels with the listing, and for a folder that can be listed it costs the
/// host no process.
namespace tw::PathQuestion {

/// The function `tw_ask`, for the shell of a session. `nonce` is the session's.
std::string script(std::string_view nonce);

/// Why the path cannot be listed, see folderRefusal. Nothing if it can be.
std::optional<std::string> refusal(std::int32_t status, std::string_view payload);

} // namespace tw::PathQuestion
