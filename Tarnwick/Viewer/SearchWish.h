#pragma once

#include "TWCore/Model/Text.h"
#include "TWCore/Model/TextDecoding.h"
#include "TWCore/Shell/FileSearch.h"
#include "Tarnwick/Viewer/ViewerMode.h"

#include <expected>
#include <string>

namespace tw {

/// What somebody looks for in a file.
struct SearchWish {
    /// Longer ones are not looked for, in bytes.
    static constexpr std::size_t mostBytes = 1024;

    std::string typed; ///< UTF-8
    bool isExpression = false;
    bool ignoresCase = false;

    /// The same in the bytes of the file: the text in its encoding; in a hex dump, pairs of hexadecimal digits are
    /// bytes. What ignores case becomes an expression. Words if the file cannot have it, or if it is no expression.
    std::expected<FileSearch::Sought, Text> in(ViewerMode mode, TextDecoding::Encoding encoding) const;

    friend bool operator==(SearchWish const &, SearchWish const &) = default;
};

} // namespace tw
