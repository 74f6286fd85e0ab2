#pragma once

#include "Tarnwick/Operations/FileDrag.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// What is dragged, as far as a target needs to know.
struct DragOffer {
    std::optional<FileDrag> files = {};  ///< of a pane, in this window or in another one
    std::vector<std::string> paths = {}; ///< of this machine, from another program; absolute
    bool canMove = true;                 ///< the source agrees that its files go

    std::size_t count() const { return files ? files->names.size() : paths.size(); }
};

/// The keys that are held during a drag.
struct DragKeys {
    bool shift = false;
    bool control = false;
    bool alt = false;

    friend bool operator==(DragKeys const &, DragKeys const &) = default;
};

} // namespace tw
