#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// The command line of a desktop entry, by the Desktop Entry Specification.
namespace tw::DesktopExec {

/// What an entry says of the program that it starts. Empty: it says nothing.
struct Entry {
    std::string exec;      ///< the value of the key, with its codes and quotes
    std::string name = {}; ///< in the user's language
    std::string icon = {};
    std::string file = {}; ///< where the entry itself lies
    bool wantsTerminal = false;
};

/// A program and its arguments that open the file of `path`, or nothing. A line that takes no file gets the path at its
/// end. Empty for a line that is malformed.
std::vector<std::string> commandLine(Entry const &entry, std::optional<std::string> const &path);

/// The same command in a terminal. Empty if there is no terminal; `isInstalled` answers for the name of a program.
std::vector<std::string> inTerminal(std::vector<std::string> command,
                                    std::function<bool(std::string const &program)> const &isInstalled);

} // namespace tw::DesktopExec
