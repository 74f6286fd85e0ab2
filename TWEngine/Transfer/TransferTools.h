#pragma once

#include <string>
#include <string_view>

namespace tw {

/// The paths of the programs that move bytes.
struct TransferTools {
    std::string cp = "/usr/bin/cp";
    std::string tar = "/usr/bin/tar";
    std::string ssh = "/usr/bin/ssh";

    /// Looks for each in the folders of `searchPath`, as PATH has them. What is in none of them keeps its usual place.
    static TransferTools find(std::string_view searchPath);

    /// In the PATH of this process.
    static TransferTools find();
};

} // namespace tw
