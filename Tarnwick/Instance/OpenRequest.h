#pragma once

#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Settings/PaneSide.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// What a start of the program asks for, which the program that runs already can do as well: a tab for each place.
struct OpenRequest {
    struct Place {
        std::optional<PaneSide> side = {}; ///< nothing: the side that is active
        PaneSpec place = {};

        friend bool operator==(Place const &, Place const &) = default;
    };

    /// In the order of the arguments.
    std::vector<Place> places = {};

    /// What a compositor wants to see of a window that comes to the front.
    std::string activationToken = {};

    /// `arguments` are the program's, without its name. Beside "--left" and "--right" they may be paths, addresses of
    /// the form file:///path, and HOST:PATH with a colon before any slash.
    static OpenRequest from(std::span<char const *const> arguments, std::string_view workingDirectory);

    /// What another program asks a file manager to show.
    enum class Show {
        folders, ///< what is in them
        items    ///< the folders that they are in, with the cursor on the first of each
    };

    /// `addresses` are of the form file:///path; others are left out. A folder gets one tab, and a request no more than
    /// `mostShown`.
    static OpenRequest showing(std::span<std::string const> addresses, Show what);

    static constexpr std::size_t mostShown = 8;

    std::string encoded() const;

    /// Nothing for a message that is not of this version of the program.
    static std::optional<OpenRequest> decoded(std::string_view message);

    friend bool operator==(OpenRequest const &, OpenRequest const &) = default;
};

/// Whether a start is to have a process of its own: it says so, or has options that are not this program's but the
/// toolkit's.
bool wantsOwnProcess(std::span<char const *const> arguments);

} // namespace tw
