#pragma once

#include <string>

namespace tw {

/// A program of this machine that opens files.
struct Application {
    std::string identifier;    ///< of its desktop entry: "org.example.Viewer.desktop"
    std::string name;          ///< in the user's language
    std::string icon = {};     ///< a name in an icon theme, or a path; may be empty
    std::string keywords = {}; ///< more words that it may be looked for by
    bool isDefault = false;    ///< what opens the file if nothing else is said

    friend bool operator==(Application const &, Application const &) = default;
};

} // namespace tw
