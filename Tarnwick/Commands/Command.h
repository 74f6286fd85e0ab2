#pragma once

namespace tw {

/// Everything that a person can ask for with a key, a menu or a button, by identity. CommandTable says the rest.
enum class Command {
    showAbout,
    quit,
    closeWindow,
    minimizeWindow,
    refresh,
    back,
    forward,
    targetIsSource,
    textBigger,
    textSmaller,
    textActualSize,
    editPath,
    toggleHidden,
    otherPane,
    equalizePanes,
    sortByName,
    sortByExtension,
    sortByDate,
    sortBySize,
    connect,
    contextMenu,
    newFolder,
    copyName,
    copyNameWithoutExtension,
    copyFullPath,
    copyHostAndPath,
    copyRelativePath,
    copyHomePath,
    copyEnclosingFolder,
    // Performed by the pane itself, by the position of the key.
    moveCursor,
    openSelection,
    goUp,
    toggleMark,
    invertMarks,
    clearMarks,
};

} // namespace tw
