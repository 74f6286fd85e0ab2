#include "TWCore/Shell/FileSearch.h"

#include "TWCore/Model/Trimmed.h"

#include <algorithm>
#include <charconv>

namespace tw::FileSearch {

namespace {

constexpr std::string_view cannot = "cannot";
constexpr std::string_view none = "none";
constexpr std::string_view failed = "failed";

/// Of processor time. An expression may try countless ways; the program's own limit counts for each line anew.
constexpr int mostSecondsOfExpression = 20;

/// What a search reads at a time. The last read may go behind the part.
constexpr std::int64_t readBytes = 64 * 1024;

/// `filter` over a part of a file. One program that copies in large pieces: the search is as fast as the copying.
std::string over(std::string const &path, Part part, std::string const &filter)
{
    auto const count = (part.to - part.from + readBytes - 1) / readBytes;
    return "{ dd bs=1 skip=" + std::to_string(part.from) + " count=0 2>/dev/null; dd bs=" + std::to_string(readBytes) +
           " count=" + std::to_string(count) + " 2>/dev/null; } < " + path + " | " + filter;
}

/// Prints the offset, behind the beginning of the part, of the match that begins there first or last.
std::string search(std::string const &path, std::string const &pattern, Part part, std::int64_t beginnings, Which which)
{
    std::string const grep = "LC_ALL=C grep -obUaF";
    if (which == Which::first)
        return over(path, part, grep + " -m 1 -e " + pattern + " 2>/dev/null | head -n 1 | cut -d : -f 1");
    return over(path, part,
                grep + " -e " + pattern + " 2>/dev/null | cut -d : -f 1 | awk '$1+0<" + std::to_string(beginnings) +
                    "{l=$1}END{print l}'");
}

/// The same for an expression. `-m` counts lines, and the first match of a line may lie before the part.
std::string searchExpression(std::string const &path, std::string const &pattern, Part part, Which which)
{
    auto const whole = withContext(part);
    auto const from = std::to_string(part.from - whole.from);
    auto const to = std::to_string(part.to - whole.from);
    auto const isFailure = "/" + std::string(failed) + "/";
    auto const isInPart = "$1+0>=" + from + "&&$1+0<" + to;
    auto const program = which == Which::first
                             ? isFailure + "{print;exit}" + isInPart + "{print $1-" + from + ";exit}"
                             : isFailure + "{l=$0;next}" + isInPart + "{l=$1-" + from + "}END{print l}";
    return over(path, whole,
                "{ ulimit -t " + std::to_string(mostSecondsOfExpression) + " 2>/dev/null; LC_ALL=C grep -obUaP -e " +
                    pattern + " 2>/dev/null; [ $? -le 1 ] || echo " + std::string(failed) +
                    "; } | cut -d : -f 1 | awk '" + program + "'");
}

} // namespace

Part beginningsIn(Part part, Sought const &sought)
{
    if (sought.kind == Sought::Kind::bytes)
        part.to -= std::ssize(sought.pattern) - 1;
    return part;
}

Part withContext(Part part)
{
    return {.from = std::max<std::int64_t>(part.from - contextBytes, 0), .to = part.to + mostBytesOfMatch};
}

std::optional<std::string> text(ShellDialect dialect, std::string_view path, Sought const &sought, Part part,
                                Which which)
{
    using namespace std::string_view_literals;
    if (dialect != ShellDialect::posix || sought.pattern.empty() ||
        sought.pattern.find_first_of("\n\0"sv) != std::string::npos)
        return std::nullopt;
    auto const isExpression = sought.kind == Sought::Kind::expression;
    auto const file = quotePath(dialect, path);
    auto const pattern = quote(dialect, sought.pattern);
    auto const beginnings = beginningsIn(part, sought);
    // Not every grep has the offset of a match, or Perl's expressions. Such a host is asked for nothing else.
    return "if [ \"$(printf 'ax\\n' | LC_ALL=C grep " + std::string(isExpression ? "-obUaP" : "-obUaF") +
           " x 2>/dev/null)\" = 1:x ]; then r=$(" +
           (isExpression ? searchExpression(file, pattern, part, which)
                         : search(file, pattern, part, beginnings.to - beginnings.from, which)) +
           "); echo \"${r:-" + std::string(none) + "}\"; else echo " + std::string(cannot) + "; fi";
}

Answer answer(std::string_view output, Part beginnings)
{
    using enum Answer::Kind;
    auto const words = trimmed(output);
    if (words == none)
        return {.kind = searched};
    if (words == failed)
        return {.kind = tooSlow};
    std::int64_t offset = 0;
    auto const *const end = words.data() + words.size();
    auto const [stop, error] = std::from_chars(words.data(), end, offset);
    if (words.empty() || error != std::errc() || stop != end || offset < 0)
        return {};
    if (offset >= beginnings.to - beginnings.from)
        return {.kind = searched};
    return {.kind = searched, .offset = beginnings.from + offset};
}

} // namespace tw::FileSearch
