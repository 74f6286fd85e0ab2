#pragma once

#include "TWCore/Model/Text.h"

#include <string>
#include <vector>

namespace tw {

/// What the strip under a pane's path says: why a place cannot be shown, or what the pane waits for.
struct PaneNotice {
    enum class Kind { waiting, failure };

    enum class Action { retry, logIn, details, showKey, giveUp };

    Kind kind = Kind::failure;
    Text text = {};                   ///< one to three sentences, the reason first, the host or path once
    std::vector<Action> actions = {}; ///< as buttons, the one for Return first
    std::string details = {};         ///< the words of ssh and of the host, whole, UTF-8, several lines
    std::string keys = {}; ///< for showKey: the fingerprints of a host, and where the old one stands; several lines

    friend bool operator==(PaneNotice const &, PaneNotice const &) = default;
};

} // namespace tw
