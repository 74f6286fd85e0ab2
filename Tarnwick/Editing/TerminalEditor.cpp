#include "Tarnwick/Editing/TerminalEditor.h"

#include <cstdlib>

namespace tw::TerminalEditor {

namespace {

/// $1 is code, with its options and quotes: `emacs -nw`. The shell outlives a closed terminal and Ctrl+C by its traps.
constexpr auto script = R"sh(
if [ -n "$3" ]; then trap 'printf . >>"$3"' EXIT; fi
trap 'exit 129' HUP TERM
trap : INT
eval "$1 \"\$2\""
)sh";

} // namespace

std::string ofThisUser()
{
    for (auto const *const name : {"VISUAL", "EDITOR"}) {
        auto const *const value = std::getenv(name);
        if (value && *value)
            return value;
    }
    return {};
}

std::vector<std::string> command(std::string const &editor, std::string const &path, std::string const &endMark)
{
    return {"sh", "-c", script, "sh", editor, path, endMark};
}

} // namespace tw::TerminalEditor
