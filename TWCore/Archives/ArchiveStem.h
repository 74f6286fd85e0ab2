#pragma once

#include <string>
#include <string_view>

namespace tw {

/// The name of an archive without what says that it is one: "a" for "a.tar.gz". Any other name stays as it is.
std::string archiveStem(std::string_view name);

} // namespace tw
