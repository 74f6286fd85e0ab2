#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// The mounts that this process sees.
class MountTable {
public:
    /// The kernel's number of a mount. A mount that replaces another one at the same place has a number of its own.
    using MountId = std::int64_t;

    /// Of a path that lies on no known mount.
    static constexpr MountId unknown = 0;

    MountTable() = default;

    /// From the text of /proc/self/mountinfo. Lines that are not understood are left out.
    static MountTable parse(std::string_view mountinfo);

    /// The mount of a normalised absolute path, by its text alone: no link is followed and nothing is read.
    MountId mountOf(std::string_view path) const;

    /// The names in the folder at this normalised absolute path on which something is mounted.
    std::vector<std::string> mountPointsIn(std::string_view folder) const;

private:
    std::map<std::string, MountId, std::less<>> mounts; ///< by mount point; of several at one place the topmost
};

} // namespace tw
