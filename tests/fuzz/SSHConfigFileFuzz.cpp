// SSHConfigFile over any text, with managed entries made of its own pieces.
//
// The text is what stands before the first byte 1; between further ones stand the values of entries, seven to each.

#include "TWCore/Check.h"
#include "TWEngine/SSHConfig/SSHConfigFile.h"
#include "TWEngine/SSHConfig/SSHConfigHosts.h"

#include <algorithm>
#include <cstdint>

namespace tw {
namespace {

using SSHConfigFile::Entry;

constexpr char separator = '\1';

std::vector<std::string> piecesOf(std::string_view input)
{
    std::vector<std::string> pieces(1);
    for (auto const character : input) {
        if (character == separator)
            pieces.emplace_back();
        else
            pieces.back() += character;
    }
    return pieces;
}

std::vector<Entry> entriesOf(std::vector<std::string> const &pieces)
{
    std::vector<Entry> entries;
    for (std::size_t at = 1; at + 6 < pieces.size(); at += 7)
        entries.push_back({.alias = pieces[at],
                           .hostName = pieces[at + 1],
                           .user = pieces[at + 2],
                           .port = pieces[at + 3],
                           .identityFile = pieces[at + 4],
                           .proxyJump = pieces[at + 5],
                           .extras = {pieces[at + 6]},
                           .isManaged = true});
    return entries;
}

std::vector<std::string> linesOf(std::string_view text)
{
    std::vector<std::string> lines(1);
    for (auto const character : text) {
        if (character == '\n')
            lines.emplace_back();
        else
            lines.back() += character;
    }
    return lines;
}

std::string withoutBlanksAround(std::string line)
{
    line.erase(0, std::min(line.find_first_not_of(" \t"), line.size()));
    line.erase(line.find_last_not_of(" \t") + 1);
    return line;
}

std::ptrdiff_t indexOf(std::vector<std::string> const &lines, std::string_view marker)
{
    auto const found =
        std::ranges::find_if(lines, [marker](auto const &line) { return withoutBlanksAround(line) == marker; });
    return found == lines.end() ? -1 : found - lines.begin();
}

/// Of a block: a line for each value, two for a name, the four of the block itself with two around it.
std::size_t mostLines(std::vector<Entry> const &entries)
{
    std::size_t lines = 6;
    for (auto const &entry : entries)
        lines += 7 + entry.extras.size();
    return lines;
}

void checkRender(std::string const &text, std::vector<Entry> const &entries)
{
    auto const before = linesOf(text);
    auto const begin = indexOf(before, SSHConfigFile::beginMarker);
    auto const end = indexOf(before, SSHConfigFile::endMarker);
    auto const rendered = SSHConfigFile::render(text, entries);
    if (entries.empty() && begin < 0) {
        check(rendered == text, "without anything to write the text is another");
        return;
    }
    auto const after = linesOf(rendered);
    check(after.size() <= before.size() + mostLines(entries), "a value has brought a line of its own");

    bool const isWhole = begin >= 0 && begin <= end;
    auto const kept = isWhole ? begin : std::ssize(before);
    for (std::ptrdiff_t line = 0; line < kept; ++line) {
        auto const index = static_cast<std::size_t>(line);
        bool const isLeftOut = !isWhole && withoutBlanksAround(before[index]).empty();
        check(isLeftOut || after[index] == before[index], "a line before the block is another");
    }
    if (isWhole) {
        auto const tail = std::ssize(before) - end - 1;
        check(std::equal(before.end() - tail, before.end(), after.end() - tail), "a line behind the block is another");
    }
    if (isWhole || (begin < 0 && end < 0))
        check(SSHConfigFile::render(rendered, entries) == rendered, "writing the same again changes the text");
}

} // namespace
} // namespace tw

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    auto const pieces = tw::piecesOf({reinterpret_cast<char const *>(data), size});
    auto const &text = pieces.front();
    for (auto const &entry : tw::SSHConfigFile::parse(text))
        tw::check(!entry.alias.contains('\n'), "a name of two lines");
    for (auto const &name : tw::SSHConfigFile::aliases(text))
        tw::check(!name.empty() && !tw::SSHConfigFile::Entry{.alias = name}.isPattern(), "a pattern is no name");
    for (auto const &line : tw::SSHConfigHosts::linesIn(text)) {
        for (auto const &name : line.names) {
            auto const isHost = line.kind == tw::SSHConfigHosts::Line::Kind::hosts;
            tw::check(!isHost || (!name.empty() && !tw::SSHConfigFile::Entry{.alias = name}.isPattern()), "no host");
            tw::check(!name.contains('\n'), "a name of two lines");
        }
    }
    tw::checkRender(text, tw::entriesOf(pieces));
    tw::checkRender(text, tw::SSHConfigFile::parse(text));
    tw::SSHConfigFile::explain(static_cast<std::int32_t>(size), text);
    return 0;
}
