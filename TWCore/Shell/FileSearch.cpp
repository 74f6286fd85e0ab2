#include "TWCore/Shell/FileSearch.h"

#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/Base64.h"
#include "TWCore/Shell/ByteExpression.h"
#include "TWCore/Shell/EndableCommand.h"

#include <algorithm>
#include <charconv>

namespace tw::FileSearch {

namespace {

constexpr std::string_view cannotWord = "cannot";
constexpr std::string_view unreadableWord = "unreadable";
constexpr std::string_view noneWord = "none ";
constexpr std::string_view slowWord = "slow";
constexpr std::string_view failedWord = "failed ";

/// Of processor time. An expression may try countless ways; the program's own limit counts for each line anew.
constexpr int mostSecondsOfExpression = 20;

/// What is copied into a pipe at a time. The last read may go behind the part.
constexpr std::int64_t readBytes = 64 * 1024;

/// Puts the file at an offset: its descriptor is shared with the program that reads next.
std::string seek(std::string const &offset)
{
    return "dd bs=1 skip=" + offset + " count=0 2>/dev/null";
}

/// A function that prints where the matches in its input are, and behind them why there are no more if grep fails.
std::string search(std::string const &pattern, Question const &question)
{
    auto const isExpression = question.sought.kind == Sought::Kind::expression;
    // The first match of a line may lie before the part of an expression.
    std::string const options = isExpression ? "-obUaP" : question.which == Which::first ? "-obUaF -m 1" : "-obUaF";
    auto const time = isExpression ? "ulimit -t " + std::to_string(mostSecondsOfExpression) + "; " : std::string();
    std::string const signals = isExpression ? "1[3-9]?:*|" : ""; // one of them ends what has used up its time
    return "tw_search() { { " + time + "ulimit -v " + std::to_string(mostBytesOfGrep / 1024) +
           "; } 2>/dev/null; { tw_e=$(grep " + options + " -e " + pattern +
           " 2>&1 >&3); tw_s=$?; } 3>&1; case $tw_s:$tw_e in 0:*|1:*) ;; " + signals +
           "2:*acktrack*|2:*JIT*|2:*recursion*) echo " + std::string(slowWord) + ";; *) echo \"" +
           std::string(failedWord) + "${tw_e##*: }\";; esac; }\n";
}

/// Puts the size of a file into $tw_size, and into $tw_to the end of the part: the farthest one, if somebody can see
/// how far grep is and end it.
std::string measure(std::string const &path, std::int64_t to, std::int64_t farthest)
{
    auto const end = std::to_string(to);
    auto size = "tw_to=" + end + "; tw_size=$(stat -Lc %s " + path + " 2>/dev/null) || tw_size=-1; ";
    if (farthest <= to)
        return size;
    auto const isFarther = "[ \"$tw_size\" -gt " + end + " ] && [ \"$tw_size\" -le " + std::to_string(farthest) + " ]";
    return size + "if " + isFarther + " && " + EndableCommand::isWatched() +
           "; then tw_to=" + std::to_string(farthest) + "; fi; ";
}

/// Calls that function with a part of a file. The rest of a file needs no pipe, which costs a tenth of the time.
std::string over(std::string const &path, Part part)
{
    auto const from = std::to_string(part.from);
    auto const count = (part.to - part.from + readBytes - 1) / readBytes;
    return "if [ \"$tw_size\" -ge " + from + " ] && [ \"$tw_size\" -le $tw_to ]; then { " + seek(from) +
           "; tw_search; } <" + path + "; else { " + seek(from) + "; dd bs=" + std::to_string(readBytes) +
           " count=" + std::to_string(count) + "; } <" + path + " | tw_search; fi";
}

/// An awk program that picks the first or last of what `search` prints, as an offset in the part that begins at
/// `part.from`. Not every awk prints a large number in full by itself.
std::string pick(Part part, Which which)
{
    auto const from = std::to_string(part.from);
    auto const isInPart = "$1+0>=" + from + "&&$1+0<" + std::to_string(part.to);
    return which == Which::first
               ? "/^[a-z]/{print;exit}" + isInPart + "{printf \"%.0f\\n\",$1-" + from + ";exit}"
               : "/^[a-z]/{l=$0;next}" + isInPart + "{l=sprintf(\"%.0f\",$1-" + from + ")}END{print l}";
}

/// Prints the offset that is in $tw_r, and the bytes around the match.
std::string show(std::string const &path, Question const &question)
{
    auto const half = std::to_string(bytesAround / 2);
    auto const &[from, to] = question.atHand;
    return "echo \"$tw_r\"; tw_r=$((tw_r + " + std::to_string(question.part.from) + ")); if [ $tw_r -lt " +
           std::to_string(from) + " ] || [ $tw_r -ge " + std::to_string(to) + " ]; then tw_r=$((tw_r > " + half +
           " ? (tw_r - " + half + ") / 4 * 4 : 0)); { " + seek("$tw_r") + "; dd bs=" + half + " count=2; } <" + path +
           " 2>/dev/null | base64 2>/dev/null | tr -d '\\n'; fi";
}

/// Not every grep has the offset of a match, or Perl's expressions. Such a host is asked for nothing else.
std::string ifPossible(std::string const &path, Sought::Kind kind, std::string const &then)
{
    std::string const option = kind == Sought::Kind::expression ? "-obUaP" : "-obUaF";
    return "LC_ALL=C; export LC_ALL; if [ ! -r " + path + " ]; then echo " + std::string(unreadableWord) +
           "; elif [ \"$(printf 'ax\\n' | command grep " + option + " x 2>/dev/null)\" = 1:x ]; then\n" + then +
           "\nelse echo " + std::string(cannotWord) + "; fi";
}

Part beginningsOf(Question const &question)
{
    auto const &[from, to] = question.part;
    return beginningsIn({from, std::max(to, question.farthest)}, question.sought);
}

std::optional<std::int64_t> offsetIn(std::string_view words)
{
    std::int64_t offset = 0;
    auto const *const end = words.data() + words.size();
    auto const [stop, error] = std::from_chars(words.data(), end, offset);
    if (words.empty() || error != std::errc() || stop != end || offset < 0)
        return std::nullopt;
    return offset;
}

/// What is said of a part without a match.
std::optional<std::int64_t> endIn(std::string_view words)
{
    return words.starts_with(noneWord) ? offsetIn(words.substr(noneWord.size())) : std::nullopt;
}

/// Where they are missing, they are read.
std::string aroundIn(std::string_view text)
{
    auto bytes = Base64::decode(trimmed(text));
    return bytes && std::ssize(*bytes) <= bytesAround ? *std::move(bytes) : std::string();
}

Answer failure(std::string_view words)
{
    auto const isLong = words.contains("memory") || words.contains("length") || words.contains("too long");
    return {.kind = isLong ? Answer::Kind::tooLong : Answer::Kind::failed, .words = std::string(words)};
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

std::int64_t beginOfAround(std::int64_t offset)
{
    constexpr std::int64_t mostUnitBytes = 4;
    return std::max<std::int64_t>(offset - bytesAround / 2, 0) / mostUnitBytes * mostUnitBytes;
}

std::vector<Part> piecesOf(Question const &question)
{
    auto const overlap = std::ssize(question.sought.pattern) - 1;
    auto const part = question.part;
    std::vector<Part> pieces;
    if (part.to - part.from <= pieceBytes + overlap)
        return pieces;
    for (auto from = part.from; from < part.to - overlap; from += pieceBytes)
        pieces.push_back({from, std::min(from + pieceBytes + overlap, part.to)});
    if (question.which == Which::last)
        std::ranges::reverse(pieces);
    return pieces;
}

std::optional<std::string> text(ShellDialect dialect, std::string_view path, Question const &question)
{
    using namespace std::string_view_literals;
    auto const &sought = question.sought;
    if (dialect != ShellDialect::posix || sought.pattern.empty() ||
        sought.pattern.find_first_of("\n\0"sv) != std::string::npos)
        return std::nullopt;
    auto const file = quotePath(dialect, path);
    auto const part = question.part;
    auto const whole = sought.kind == Sought::Kind::expression ? withContext(part) : part;
    auto const beginnings = beginningsOf(question);
    auto const program = pick({beginnings.from - whole.from, beginnings.to - whole.from}, question.which);
    return ifPossible(file, sought.kind,
                      search(quote(dialect, sought.pattern), question) + measure(file, whole.to, question.farthest) +
                          "tw_r=$({ " + over(file, whole) + "; } 2>/dev/null | cut -d : -f 1 | awk '" + program +
                          "')\ncase $tw_r in '') echo " + std::string(noneWord) +
                          "$tw_to;; *[!0-9]*) echo \"$tw_r\";; *) " + show(file, question) + ";; esac");
}

Answer answer(std::string_view output, Question const &question)
{
    using enum Answer::Kind;
    auto const end = output.find('\n');
    auto const words = trimmed(output.substr(0, end));
    auto const &part = question.part;
    if (auto const to = endIn(words))
        return {.kind = searched, .found = {.to = std::clamp(*to, part.to, std::max(part.to, question.farthest))}};
    if (words == slowWord)
        return {.kind = tooSlow};
    if (words == unreadableWord)
        return {.kind = unreadable};
    if (words.starts_with(trimmed(failedWord)))
        return failure(trimmed(words.substr(trimmed(failedWord).size())));
    auto const offset = offsetIn(words);
    if (!offset)
        return {};
    auto const beginnings = beginningsOf(question);
    if (*offset >= beginnings.to - beginnings.from)
        return {.kind = searched, .found = {.to = part.to}};
    auto around = end == std::string_view::npos ? std::string() : aroundIn(output.substr(end));
    return {.kind = searched,
            .found = {.match = Match{.offset = beginnings.from + *offset, .around = std::move(around)}, .to = part.to}};
}

std::optional<std::int64_t> position(std::string_view output)
{
    return offsetIn(trimmed(output));
}

void throwIfFailed(Answer const &answer)
{
    using enum Answer::Kind;
    if (answer.kind == tooSlow)
        throw ByteExpression::TooSlow();
    if (answer.kind == tooLong)
        throw Failed("this file cannot be searched: one of its lines is too long");
    if (answer.kind == failed)
        throw Failed("this file cannot be searched: " + (answer.words.empty() ? "grep has failed" : answer.words));
}

} // namespace tw::FileSearch
