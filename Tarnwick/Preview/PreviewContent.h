#pragma once

#include "TWCore/Model/Text.h"
#include "TWEngine/Preview/PictureAnswer.h"

#include <memory>
#include <string>
#include <variant>

namespace tw {

/// What the preview panel shows of one file.
struct PreviewContent {
    /// The beginning of a text file, in UTF-8.
    struct Writing {
        std::string text;
    };

    using Body = std::variant<Text, Writing, std::shared_ptr<Picture const>>;

    /// Of a picture: a small one stands in for the whole until that is decoded.
    enum class Detail { all, little };

    std::string name; ///< exact bytes
    Text facts = {};  ///< what it is, how large, how old: one line
    Body body = {};   ///< words where there is nothing to see
    Detail detail = Detail::all;
};

} // namespace tw
