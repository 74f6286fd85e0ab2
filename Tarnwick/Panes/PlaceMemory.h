#pragma once

#include <list>
#include <string>
#include <unordered_map>

namespace tw {

/// Where the folders that a pane has shown were left: the cursor, and how far they were scrolled.
class PlaceMemory {
public:
    /// More than a person finds the way back through. The folder that was left first is forgotten first.
    static constexpr std::size_t mostFolders = 1000;

    struct Place {
        std::string cursorName;
        int firstVisibleRow = 0;

        friend bool operator==(Place const &, Place const &) = default;
    };

    void remember(std::string const &connection, std::string const &path, Place place);

    /// The top of the folder if nothing is known of it.
    Place recall(std::string const &connection, std::string const &path) const;

private:
    using Newest = std::list<std::pair<std::string, Place>>;

    static std::string keyOf(std::string const &connection, std::string const &path);

    Newest newest; ///< the folder that was left last is the first
    std::unordered_map<std::string, Newest::iterator> byKey;
};

} // namespace tw
