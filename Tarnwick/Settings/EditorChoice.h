#pragma once

namespace tw {

/// What F4 opens a file with.
enum class EditorChoice {
    application, ///< the desktop's application for its type
    terminal,    ///< the user's own editor in a terminal, see TerminalEditor
};

} // namespace tw
