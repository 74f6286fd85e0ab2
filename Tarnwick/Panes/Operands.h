#pragma once

#include "TWEngine/Browsing/Browser.h"

#include <memory>
#include <string>
#include <vector>

namespace tw {

/// What an operation works on, as it was at the moment of the key press. What the pane does afterwards changes nothing
/// about it.
struct Operands {
    std::shared_ptr<Browser> browser;
    std::string connection;         ///< "local", or a host
    std::string path;               ///< of the listing on show
    std::vector<std::string> names; ///< exact bytes: the marked names on show, else the name under the cursor

    /// The full path of one of the names.
    std::string pathOf(std::string const &name) const { return path == "/" ? path + name : path + "/" + name; }
};

} // namespace tw
