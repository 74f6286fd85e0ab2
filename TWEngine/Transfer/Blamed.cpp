#include "TWEngine/Transfer/Blamed.h"

#include "TWCore/Model/Trimmed.h"

#include <array>
#include <unordered_set>

namespace tw {

namespace {

/// Complaints about the archive as a whole, which say nothing about a name.
constexpr std::array<std::string_view, 6> aboutTheWhole{
    "Unexpected EOF in archive",   "Error is not recoverable: exiting now",
    "Exiting with failure status", "Error exit delayed from previous errors",
    "A lone zero block",           "Truncated tar archive",
};

bool isAboutTheWhole(std::string_view line)
{
    for (auto const words : aboutTheWhole)
        if (line.contains(words))
            return true;
    return false;
}

/// The name of a path that stands at the beginning of the text, before a colon.
std::string_view nameIn(std::string_view text)
{
    if (text.starts_with("./"))
        text.remove_prefix(2);
    return text.substr(0, text.find_first_of("/:"));
}

/// GNU tar puts the name before the path that it was called by; others put nothing there.
std::string_view withoutProgram(std::string_view line)
{
    auto const program = line.substr(0, line.find(": "));
    bool const isNamed = program == "tar" || program.ends_with("/tar");
    return isNamed && program.size() < line.size() ? line.substr(program.size() + 2) : line;
}

/// The lines of what a program wrote, without blank ones.
std::vector<std::string_view> linesOf(std::string_view words)
{
    std::vector<std::string_view> lines;
    while (!words.empty()) {
        auto const line = trimmed(words.substr(0, words.find('\n')));
        words.remove_prefix(std::min(words.find('\n'), words.size() - 1) + 1);
        if (!line.empty())
            lines.push_back(line);
    }
    return lines;
}

/// The name of the first path in quotes, from the working folder on or in `to`; empty if there is none, or if it has
/// signs that are quoted in another way.
std::string_view nameInQuotes(std::string_view line, std::string const &to)
{
    auto const begin = std::min(line.find('\''), line.size());
    auto const rest = line.substr(std::min(begin + 1, line.size()));
    auto const path = rest.substr(0, rest.find('\''));
    // Another quote follows where a sign in the path has one of its own.
    auto const behind = rest.substr(std::min(path.size() + 1, rest.size()));
    if (behind.starts_with('\\') || behind.starts_with('$') || behind.starts_with('\''))
        return {};
    auto const content = to.ends_with('/') ? to : to + '/';
    auto const below = path.starts_with(content) ? path.substr(content.size()) : path;
    return below.substr(0, below.find('/'));
}

} // namespace

Blamed Blamed::in(std::string_view words, std::vector<std::string> const &given, Unreadable unreadable)
{
    std::unordered_set<std::string> const known(given.begin(), given.end());
    Blamed blamed;
    for (auto const line : linesOf(words)) {
        if (isAboutTheWhole(line))
            continue;
        std::string const name(nameIn(withoutProgram(line)));
        if (known.contains(name))
            blamed.names.insert(name);
        else if (unreadable == Unreadable::meansEverything)
            blamed.isEverything = true;
    }
    return blamed;
}

Blamed Blamed::inCopy(std::string_view words, std::vector<std::string> const &given, std::string const &to)
{
    std::unordered_set<std::string> const known(given.begin(), given.end());
    Blamed blamed;
    for (auto const line : linesOf(words)) {
        std::string const name(nameInQuotes(line, to));
        if (known.contains(name))
            blamed.names.insert(name);
        else
            blamed.isEverything = true;
    }
    return blamed;
}

} // namespace tw
