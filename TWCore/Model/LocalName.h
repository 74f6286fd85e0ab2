#pragma once

#include <string>
#include <string_view>

namespace tw::LocalName {

/// Makes a remote file name safe as the last component of a local path: without "/", and never "", "." or "..".
std::string safe(std::string_view name);

} // namespace tw::LocalName
