#pragma once

#include <string>

namespace tw {

/// The field in which a name is edited in its row.
struct NameField {
    int row = 0;
    std::string text; ///< the bytes of the name
    std::string base; ///< the beginning of the text that is selected at first
};

} // namespace tw
