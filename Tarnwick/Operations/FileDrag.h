#pragma once

#include <string>
#include <vector>

namespace tw {

/// Items that are pasted or dropped: names in a folder of a connection.
struct FileDrag {
    std::string connection; ///< "local", or a host
    std::string directory;
    std::vector<std::string> names;
    bool isMove = false; ///< they were cut
};

} // namespace tw
