#pragma once

#include "Tarnwick/Viewer/PictureReading.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tw {

enum class Neighbour { previous, next };

/// The file that a viewer is opened on, as its listing has it.
struct ViewerSubject {
    std::shared_ptr<ViewedFile> file;
    PictureReading::Decode decode;       ///< of images
    std::string label;                   ///< of its connection
    std::string path;                    ///< whole; exact bytes
    EntryKind kind = EntryKind::unknown; ///< a link may lead anywhere
    std::int64_t size = 0;               ///< bytes; 0: not known, or an empty file

    /// The image before or behind this file in its folder; nothing: there is none, or the folder is not on show.
    std::function<std::optional<ViewerSubject>(Neighbour which)> neighbour = {};

    std::string name() const { return path.substr(path.rfind('/') + 1); }
};

} // namespace tw
