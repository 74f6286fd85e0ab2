#pragma once

#include <string>
#include <string_view>

namespace tw::LocalName {

/// A remote file name as the last component of a local path: no "/" in it, and never "", "." or "..".
std::string safe(std::string_view name);

} // namespace tw::LocalName
