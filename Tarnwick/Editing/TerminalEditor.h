#pragma once

#include <string>
#include <vector>

/// The user's own editor of files, in a terminal.
namespace tw::TerminalEditor {

/// A command of a shell: $VISUAL, or else $EDITOR. Empty if the user has neither.
std::string ofThisUser();

/// The program and its arguments that edit the file at `path` in a terminal. When the editor ends, or its terminal is
/// closed, `endMark` gets one byte longer: many terminals only ask a running one for a window and end at once, so their
/// own end says nothing. Empty `endMark`: nobody needs to know.
std::vector<std::string> command(std::string const &editor, std::string const &path, std::string const &endMark);

} // namespace tw::TerminalEditor
