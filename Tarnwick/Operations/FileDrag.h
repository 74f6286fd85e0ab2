#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// Items that are copied, cut, or dragged: names in a folder of a connection.
struct FileDrag {
    /// The format in which they travel within the program, and to another window of it.
    static constexpr std::string_view mimeType = "application/vnd.velmora.tarnwick.files+json";

    std::string connection; ///< "local", or a host
    std::string directory;
    std::vector<std::string> names; ///< exact bytes
    bool isMove = false;            ///< they were cut

    /// The full paths of all names, in their order.
    std::vector<std::string> paths() const
    {
        auto const folder = directory.ends_with('/') ? directory : directory + '/';
        std::vector<std::string> all;
        all.reserve(names.size());
        for (auto const &name : names)
            all.push_back(folder + name);
        return all;
    }

    friend bool operator==(FileDrag const &, FileDrag const &) = default;
};

} // namespace tw
