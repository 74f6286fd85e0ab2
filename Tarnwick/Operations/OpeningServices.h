#pragma once

#include "TWEngine/Applications/Applications.h"
#include "TWEngine/Browsing/RemoteFiles.h"

#include <functional>
#include <memory>
#include <string>

namespace tw {

class EditSessions;

/// What opening a file needs of the program. Shared by all windows.
struct OpeningServices {
    std::shared_ptr<Applications> applications = {}; ///< null: nothing can be opened
    std::shared_ptr<RemoteFiles> copies = {};
    std::shared_ptr<EditSessions> edits = {}; ///< null: files of hosts cannot be edited
    /// The user's editor, if files are to be edited in a terminal, see TerminalEditor; may answer nothing.
    std::function<std::string()> terminalEditor = {};
    /// Lets the window of a program that is started now come to the front; may answer nothing.
    std::function<std::string()> activationToken = {};

    /// That of now; empty without one.
    std::string tokenNow() const { return activationToken ? activationToken() : std::string(); }
};

} // namespace tw
