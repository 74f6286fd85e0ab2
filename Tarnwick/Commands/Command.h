#pragma once

namespace tw {

/// Everything that a person can ask for with a key, a menu or a button, by identity. CommandTable says the rest.
enum class Command {
    showAbout,
    quit,
    closeWindow,
    refresh,
    back,
    forward,
    toggleHidden,
    otherPane,
    equalizePanes,
    connect,
    newFolder,
    // Performed by the pane itself, by the position of the key.
    moveCursor,
    openSelection,
    goUp,
    toggleMark,
    invertMarks,
    clearMarks,
};

} // namespace tw
