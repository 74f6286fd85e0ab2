#pragma once

#include "Tarnwick/Clipboard/FileFormats.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tw {

/// Something on the clipboard that a file can be made of.
struct ClipboardPiece {
    enum class Kind { text, image };

    Kind kind = Kind::text;
    std::string extension; ///< of the file, such as "png"
    std::string bytes;
};

/// What is on the clipboard, as far as it can be pasted.
struct ClipboardContent {
    std::optional<FileFormats::Offered> files = {};
    std::optional<ClipboardPiece> piece = {}; ///< only without files
    std::uint64_t version = 0;                ///< another one after each change of the clipboard
};

} // namespace tw
