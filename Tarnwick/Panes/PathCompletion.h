#pragma once

#include "TWCore/Model/DirectorySnapshot.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// What Tab makes of a path that is being typed: what its names have in common, then one after the other.
class PathCompletion {
public:
    /// More than anybody goes through with one key.
    static constexpr std::size_t mostNames = 1000;

    /// `typed` ends in the beginning of a name, which may be empty; `folder` is where that name is looked for.
    ///
    /// Folders count, and links, which may lead to one. Hidden ones count if the beginning has the dot. A name that
    /// cannot be shown as it is cannot be read in a field either, so it is left out.
    PathCompletion(std::string typed, DirectorySnapshot const &folder);

    /// The text that was to be completed.
    std::string const &asked() const noexcept { return typed; }

    /// Nothing begins like the text.
    bool isEmpty() const noexcept { return names.empty(); }

    /// The text now.
    std::string const &text() const noexcept { return current; }

    /// What the text may become, each a name behind what was typed before it; sorted.
    std::vector<std::string> const &choices() const noexcept { return names; }

    /// Which of them stands in the text, if one does.
    std::optional<std::size_t> chosen() const noexcept
    {
        return hasTurned || names.size() == 1 ? std::optional(next) : std::nullopt;
    }

    /// Puts one of them into the text.
    void choose(std::size_t which);

    enum class Turn { forward, backward };

    /// Goes on to another name; the only one stays.
    void turn(Turn direction);

    /// Where the names of a typed path are looked for: the text up to its last slash.
    static std::string_view headOf(std::string_view typed);

private:
    std::string const typed;
    std::string current;
    std::vector<std::string> names; ///< sorted
    std::size_t next = 0;           ///< of `names`
    bool hasTurned = false;
};

} // namespace tw
