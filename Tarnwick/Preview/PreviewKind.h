#pragma once

#include "TWCore/Model/Text.h"

#include <string>
#include <string_view>

namespace tw {

/// What a file is, by its first bytes: a name says what somebody wants it to be.
struct PreviewKind {
    enum class Look {
        picture, ///< a decoder makes one of it
        text,
        other, ///< nothing to see
    };

    Look look = Look::other;
    std::string format = {}; ///< of a picture: the name that its decoder knows
    Text title = {};

    /// `name` is asked for a file that does not say what it is.
    static PreviewKind of(std::string_view beginning, std::string_view name);
};

} // namespace tw
