#include "TWEngine/SSHConfig/SSHConfigFile.h"

#include "TWCore/Model/LowerCased.h"
#include "TWCore/Model/Trimmed.h"

#include <array>
#include <unordered_set>

namespace tw::SSHConfigFile {

namespace {

using Lines = std::vector<std::string_view>;

constexpr std::string_view blanks = " \t";
constexpr std::string_view furtherNames = "# also:";

std::string_view withoutBlanksAround(std::string_view text)
{
    auto const first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Split at LF, empty lines kept; one more than there are LFs.
Lines linesOf(std::string_view text)
{
    Lines lines;
    for (;;) {
        auto const end = text.find('\n');
        lines.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return lines;
        text.remove_prefix(end + 1);
    }
}

/// The words of a line: what stands between blanks, tabs and "=".
std::vector<std::string_view> piecesOf(std::string_view line)
{
    constexpr std::string_view separators = " \t=";
    std::vector<std::string_view> pieces;
    for (;;) {
        auto const begin = line.find_first_not_of(separators);
        if (begin == std::string_view::npos)
            return pieces;
        line.remove_prefix(begin);
        auto const end = std::min(line.find_first_of(separators), line.size());
        pieces.push_back(line.substr(0, end));
        line.remove_prefix(end);
    }
}

std::string joined(std::span<std::string_view const> parts, char separator)
{
    std::string text;
    for (auto const &part : parts) {
        if (&part != &parts.front())
            text += separator;
        text += part;
    }
    return text;
}

/// The options that have a field, in the order in which they are written.
struct Field {
    std::string_view name;
    std::string Entry::*value;
};

constexpr std::array fields{
    Field{"HostName", &Entry::hostName},         Field{"User", &Entry::user},           Field{"Port", &Entry::port},
    Field{"IdentityFile", &Entry::identityFile}, Field{"ProxyJump", &Entry::proxyJump},
};

/// Takes the lines one by one.
class Parser {
public:
    void take(std::string_view wholeLine)
    {
        auto const line = withoutBlanksAround(wholeLine);
        if (line == beginMarker) {
            inBlock = true; // what began before it goes on
        } else if (line == endMarker) {
            close();
            inBlock = false;
        } else if (!line.empty() && !line.starts_with('#')) {
            takeOption(line, piecesOf(line));
        }
    }

    std::vector<Entry> finish()
    {
        close();
        return std::move(entries);
    }

private:
    void takeOption(std::string_view line, std::span<std::string_view const> pieces)
    {
        if (pieces.empty())
            return;
        auto const keyword = lowerCased(pieces.front());
        auto const values = pieces.subspan(1);
        if (keyword == "host") {
            close();
            open(values);
        } else if (keyword == "match") {
            close();
        } else if (inHand) {
            auto const *const field =
                std::ranges::find_if(fields, [&](Field const &one) { return lowerCased(one.name) == keyword; });
            if (field != fields.end())
                (*inHand).*(field->value) = joined(values, ' ');
            else
                inHand->extras.emplace_back(line);
        }
    }

    void open(std::span<std::string_view const> names)
    {
        inHand.emplace(Entry{.isManaged = inBlock});
        if (!names.empty())
            inHand->alias = names.front();
        if (names.size() > 1)
            inHand->extras.push_back(std::string(furtherNames) + ' ' + joined(names.subspan(1), ' '));
    }

    void close()
    {
        if (inHand)
            entries.push_back(*std::exchange(inHand, std::nullopt));
    }

    std::vector<Entry> entries;
    std::optional<Entry> inHand;
    bool inBlock = false;
};

/// What of a value can be written: one line. OpenSSH itself reads a line up to a NUL.
std::string_view oneLine(std::string_view value)
{
    return value.substr(0, value.find_first_of(std::string_view("\n\0", 2)));
}

bool isMarker(std::string_view line)
{
    auto const text = withoutBlanksAround(line);
    return text == beginMarker || text == endMarker;
}

void writeEntry(std::string &block, Entry const &entry)
{
    auto const alias = oneLine(entry.alias);
    if (withoutBlanksAround(alias).empty())
        return;
    block += "\nHost ";
    block += alias;
    block += '\n';
    for (auto const &field : fields) {
        auto const value = withoutBlanksAround(oneLine(entry.*(field.value)));
        if (value.empty())
            continue;
        block += "    ";
        block += field.name;
        block += ' ';
        block += value;
        block += '\n';
    }
    for (auto const &extra : entry.extras) {
        auto const line = oneLine(extra);
        if (line.starts_with(furtherNames) || isMarker(line))
            continue;
        block += "    ";
        block += line;
        block += '\n';
    }
}

/// Without a line end behind it.
std::string blockOf(std::span<Entry const> managed)
{
    std::string block(beginMarker);
    block += "\n# Written by Tarnwick. Anything outside these two lines"
             "\n# is yours and is never rewritten.\n";
    for (auto const &entry : managed)
        writeEntry(block, entry);
    block += endMarker;
    return block;
}

std::string withBlockAtTheEnd(Lines lines, std::string_view block)
{
    while (!lines.empty() && withoutBlanksAround(lines.back()).empty())
        lines.pop_back();
    if (!lines.empty())
        lines.emplace_back();
    lines.push_back(block);
    lines.emplace_back();
    return joined(lines, '\n');
}

} // namespace

bool Entry::isPattern() const noexcept
{
    return alias.find_first_of("*?") != std::string::npos || alias.starts_with('!');
}

std::vector<Entry> parse(std::string_view text)
{
    Parser parser;
    for (auto const line : linesOf(text))
        parser.take(line);
    return parser.finish();
}

std::vector<std::string> aliases(std::string_view text)
{
    std::vector<std::string> names;
    std::unordered_set<std::string> seen;
    for (auto const &entry : parse(text)) {
        if (!entry.alias.empty() && !entry.isPattern() && seen.insert(entry.alias).second)
            names.push_back(entry.alias);
    }
    return names;
}

std::string render(std::string_view existing, std::span<Entry const> managed)
{
    auto const lines = linesOf(existing);
    auto const find = [&lines](std::string_view marker) {
        return std::ranges::find_if(lines, [marker](auto line) { return withoutBlanksAround(line) == marker; });
    };
    auto const begin = find(beginMarker);
    auto const end = find(endMarker);
    if (managed.empty() && begin == lines.end())
        return std::string(existing);

    auto const block = blockOf(managed);
    if (begin == lines.end() || end == lines.end() || begin > end)
        return withBlockAtTheEnd(lines, block);
    Lines result(lines.begin(), begin);
    result.emplace_back(block);
    result.insert(result.end(), end + 1, lines.end());
    return joined(result, '\n');
}

std::vector<std::string> testCommand(std::string_view alias)
{
    std::vector<std::string> arguments{"-o", "BatchMode=yes",
                                       "-o", "ConnectTimeout=8", // less than a person waits before asking again
                                       "-o", "StrictHostKeyChecking=accept-new"};
    if (alias.starts_with('-'))
        arguments.emplace_back("--"); // it would be taken for an option
    arguments.emplace_back(alias);
    arguments.emplace_back("echo tw-ok");
    return arguments;
}

std::string explain(std::int32_t exitCode, std::string_view output)
{
    auto const text = lowerCased(output);
    auto const says = [&text](std::string_view words) { return text.contains(words); };
    if (exitCode == 0 && says("tw-ok"))
        return {};
    if (says("could not resolve") || says("name or service not known"))
        return "the name does not resolve — check HostName";
    if (says("connection refused"))
        return "nothing is listening — check Port, or whether sshd is running";
    if (says("connection timed out") || says("operation timed out"))
        return "no answer — check the address, or whether a jump host is needed";
    if (says("permission denied"))
        return "reached the server, but it refused the key — check User and IdentityFile";
    if (says("host key verification failed"))
        return "the host key changed since last time — verify it before trusting it";
    if (says("no such file") && says("identity"))
        return "the key file in IdentityFile is not there";
    // White space alone is no explanation, and an empty one would mean that it worked.
    auto const asItCame = trimmed(output);
    return asItCame.empty() ? "failed with code " + std::to_string(exitCode) : std::string(asItCame);
}

} // namespace tw::SSHConfigFile
