#include "TWEngine/SSH/PrintedSettings.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace tw::PrintedSettings {

namespace {

/// What the tokens of one host stand for.
using Tokens = std::map<char, std::string_view>;

/// Calls `take` with each line.
template <class Take>
void forEachLine(std::string_view text, Take take)
{
    while (!text.empty()) {
        auto const end = std::min(text.find('\n'), text.size());
        auto line = text.substr(0, end);
        if (line.ends_with('\r')) // the log has it
            line.remove_suffix(1);
        take(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

std::optional<std::chrono::seconds> secondsIn(std::string_view value)
{
    // Longer than anybody waits; a number is no text like "none" either.
    constexpr int most = 24 * 60 * 60;
    int seconds = 0;
    auto const [end, error] = std::from_chars(value.data(), value.data() + value.size(), seconds);
    if (error != std::errc() || end != value.data() + value.size() || seconds <= 0)
        return std::nullopt;
    return std::chrono::seconds(std::min(seconds, most));
}

/// ssh takes the value of an option apart at blanks and quotes, and fills in tokens and variables.
bool needsNoQuotes(std::string_view path)
{
    return path.starts_with('/') && path.find_first_of("%$\"'\\# ") == std::string_view::npos &&
           std::ranges::all_of(path, [](unsigned char byte) { return byte > 0x20 && byte != 0x7f; });
}

/// As ssh expands the name of an identity file.
std::optional<std::string> expanded(std::string_view path, Tokens const &tokens)
{
    std::string result;
    if (path.starts_with("~/")) {
        result = tokens.at('d');
        path.remove_prefix(1);
    }
    while (!path.empty()) {
        auto const plain = std::min(path.find('%'), path.size());
        result += path.substr(0, plain);
        path.remove_prefix(plain);
        if (path.empty())
            break;
        auto const token = path.size() > 1 ? tokens.find(path[1]) : tokens.end();
        if (token == tokens.end())
            return std::nullopt;
        result += token->second;
        path.remove_prefix(2);
    }
    return result.starts_with('/') ? std::optional(result) : std::nullopt;
}

} // namespace

HostSettings read(std::string_view printed, std::string_view home)
{
    HostSettings settings;
    Tokens tokens{{'d', home}, {'%', "%"}};
    std::vector<std::string_view> identities;
    forEachLine(printed, [&](std::string_view line) {
        auto const blank = line.find(' ');
        if (blank == std::string_view::npos)
            return;
        auto const name = line.substr(0, blank);
        auto const value = line.substr(blank + 1);
        if (name == "connecttimeout")
            settings.connectTimeout = secondsIn(value);
        else if (name == "controlpath" && needsNoQuotes(value))
            settings.controlPath = value;
        else if (name == "identityfile" && identities.size() < mostIdentityFiles)
            identities.push_back(value);
        else if (name == "sessiontype")
            settings.knowsSessionType = true;
        else if (name == "host")
            tokens['n'] = value;
        else if (name == "hostname")
            tokens['h'] = value;
        else if (name == "user")
            tokens['r'] = value;
        else if (name == "port")
            tokens['p'] = value;
    });
    for (auto const identity : identities) {
        if (auto path = expanded(identity, tokens))
            settings.identityFiles.push_back(std::move(*path));
    }
    return settings;
}

std::optional<std::vector<std::string>> filesIn(std::string_view log)
{
    constexpr std::string_view introduction = "debug1: Reading configuration data ";
    constexpr std::size_t longestName = 200;
    std::vector<std::string> files;
    bool isWhole = true;
    forEachLine(log, [&](std::string_view line) {
        if (!line.starts_with(introduction))
            return;
        auto const name = line.substr(introduction.size());
        isWhole = isWhole && name.size() < longestName;
        files.emplace_back(name);
    });
    return isWhole ? std::optional(std::move(files)) : std::nullopt;
}

} // namespace tw::PrintedSettings
