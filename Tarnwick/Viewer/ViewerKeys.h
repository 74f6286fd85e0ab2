#pragma once

#include "Tarnwick/Commands/KeyStroke.h"

#include <optional>
#include <span>
#include <string_view>

namespace tw {

/// What a key or a button of a viewer asks for.
enum class ViewerAction {
    close,
    lineDown,
    lineUp,
    pageDown,
    pageUp,
    start,
    end,
    right,
    left,
    showText,
    showHex,
    showImage,
    toggleWrap,
    nextEncoding,
    goTo,
    find,
    findNext,
    findPrevious,
    previousFile,
    follow,
    copy,
    bigger,
    smaller,
    usualSize,
    actualSize,
};

struct ViewerKey {
    ViewerAction action;
    std::string_view chords; ///< as `spelled` spells them, with a blank between them
    std::string_view help;
};

/// All keys of a viewer: those of other windows, and those of a pager in a terminal.
std::span<ViewerKey const> viewerKeys();

/// A sign that the layout types with Shift counts as the sign.
std::optional<ViewerAction> viewerActionOf(KeyStroke stroke);

} // namespace tw
