#pragma once

#include <cstdint>

namespace tw {

/// What a deletion does about folders that their owner cannot write to: nothing in them can be deleted as they are.
enum class LockedFolders : std::uint8_t {
    stay, ///< with what is in them; the deletion fails
    go,   ///< the owner gets the right to write for as long as it takes
};

} // namespace tw
