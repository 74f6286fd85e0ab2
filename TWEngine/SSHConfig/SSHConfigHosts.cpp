#include "TWEngine/SSHConfig/SSHConfigHosts.h"

#include "TWCore/Model/LowerCased.h"
#include "TWEngine/Platform/HomeFolder.h"
#include "TWEngine/SSHConfig/SSHConfigError.h"
#include "TWEngine/SSHConfig/SSHConfigOnDisk.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

#include <glob.h>

namespace tw::SSHConfigHosts {

namespace {

constexpr std::string_view blanks = " \t\r\f";

std::string_view nextLineOf(std::string_view &text)
{
    auto const end = std::min(text.find('\n'), text.size());
    auto const line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

void skipBlanks(std::string_view &rest)
{
    rest.remove_prefix(std::min(rest.find_first_not_of(blanks), rest.size()));
}

/// The next word as ssh reads it: quotes hold it together. Nothing at the end of the line and before a comment.
std::optional<std::string> nextWordOf(std::string_view &rest)
{
    skipBlanks(rest);
    if (rest.empty() || rest.front() == '#')
        return std::nullopt;
    std::string word;
    auto isQuoted = false;
    while (!rest.empty() && (isQuoted || !blanks.contains(rest.front()))) {
        if (rest.front() == '"')
            isQuoted = !isQuoted;
        else
            word += rest.front();
        rest.remove_prefix(1);
    }
    return word;
}

/// The keyword in lower case; one "=" may stand behind it.
std::string keywordOf(std::string_view &rest)
{
    skipBlanks(rest);
    auto const end = std::min(rest.find_first_of(" \t\r\f=\""), rest.size());
    auto keyword = lowerCased(rest.substr(0, end));
    rest.remove_prefix(end);
    skipBlanks(rest);
    if (rest.starts_with('='))
        rest.remove_prefix(1);
    return keyword;
}

std::vector<std::string> wordsOf(std::string_view rest)
{
    std::vector<std::string> words;
    while (auto word = nextWordOf(rest))
        words.push_back(*std::move(word));
    return words;
}

bool isPattern(std::string const &name)
{
    return name.find_first_of("*?") != std::string::npos || name.starts_with('!');
}

bool namesEveryHost(std::vector<std::string> const &patterns)
{
    return std::ranges::find(patterns, "*") != patterns.end() &&
           std::ranges::none_of(patterns, [](auto const &each) { return each.starts_with('!'); });
}

/// Follows the includes.
class Reader {
public:
    explicit Reader(std::string const &path) : folder(path.substr(0, path.rfind('/') + 1)) { read(path, 0); }

    std::vector<std::string> names;

private:
    void read(std::string const &path, int depth)
    {
        if (depth > deepestInclude || files++ >= mostFiles)
            return;
        for (auto const &line : linesIn(textOf(path))) {
            for (auto const &name : line.names) {
                if (line.kind == Line::Kind::hosts)
                    add(name);
                else
                    include(name, depth + 1);
            }
        }
    }

    std::string textOf(std::string const &path)
    {
        try {
            auto text = SSHConfigOnDisk::read(path).value_or("");
            bytes += text.size();
            return bytes <= mostBytes ? text : std::string();
        } catch (SSHConfigError const &) {
            return {};
        }
    }

    void add(std::string const &name)
    {
        if (names.size() < mostNames && seen.insert(name).second)
            names.push_back(name);
    }

    void include(std::string pattern, int depth)
    {
        if (pattern.starts_with("~/"))
            pattern.replace(0, 1, HomeFolder::ofAccount());
        else if (!pattern.starts_with('/'))
            pattern.insert(0, folder);
        glob_t found{};
        if (::glob(pattern.c_str(), 0, nullptr, &found) == 0) {
            for (std::size_t index = 0; index < found.gl_pathc; ++index)
                read(found.gl_pathv[index], depth);
        }
        ::globfree(&found);
    }

    std::string const folder; ///< of the first file, with a "/" at its end: what other paths are relative to
    std::unordered_set<std::string> seen;
    std::size_t files = 0;
    std::size_t bytes = 0;
};

} // namespace

std::vector<Line> linesIn(std::string_view text)
{
    std::vector<Line> lines;
    auto isForEveryHost = true;
    while (!text.empty()) {
        auto rest = nextLineOf(text);
        auto const keyword = keywordOf(rest);
        if (keyword == "host") {
            auto names = wordsOf(rest);
            isForEveryHost = namesEveryHost(names);
            std::erase_if(names, [](auto const &name) { return name.empty() || isPattern(name); });
            if (!names.empty())
                lines.push_back({Line::Kind::hosts, std::move(names)});
        } else if (keyword == "match") {
            auto const words = wordsOf(rest);
            isForEveryHost = words.size() == 1 && lowerCased(words.front()) == "all";
        } else if (keyword == "include" && isForEveryHost) {
            lines.push_back({Line::Kind::files, wordsOf(rest)});
        }
    }
    return lines;
}

std::vector<std::string> all(std::string const &path)
{
    return Reader(path).names;
}

} // namespace tw::SSHConfigHosts
