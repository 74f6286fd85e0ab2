#pragma once

#include "TWCore/Shell/ShellDialect.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The command that looks for something in a part of a file, on the host that the file is on.
namespace tw::FileSearch {

enum class Which { first, last };

struct Sought {
    enum class Kind {
        bytes,
        expression ///< a valid ByteExpression
    };

    std::string pattern = {};
    Kind kind = Kind::bytes;
};

/// A part of a file: bytes that lie in it whole, and matches of an expression that begin in it.
struct Part {
    std::int64_t from = 0;
    std::int64_t to = 0;

    friend bool operator==(Part const &, Part const &) = default;
};

/// A search through a part of a file.
struct Question {
    Sought sought;
    Part part;
    Which which = Which::first;
    Part atHand = {}; ///< a match that begins there is shown without the bytes around it

    /// Of bytes, and the first match: the search may go on behind the part up to here, where the file ends. A host does
    /// so where the search can be watched, see EndableCommand. 0: it may not.
    std::int64_t farthest = 0;
};

/// Where the matches of a part begin: bytes that begin behind it would not lie in it whole.
Part beginningsIn(Part part, Sought const &sought);

/// How far around a part an expression looks: what is before it says whether a line begins, and a match may go on
/// behind it.
constexpr std::int64_t contextBytes = 4096;
constexpr std::int64_t mostBytesOfMatch = 64 * 1024;

/// What an expression is run over, for its matches in a part.
Part withContext(Part part);

/// What comes with a match, so that showing it takes no further round trip. Half of it is from before the match.
constexpr std::int64_t bytesAround = 128 * 1024;

/// Where the bytes around a match begin: with a whole code unit of every encoding.
std::int64_t beginOfAround(std::int64_t offset);

/// The lines of a file may be as long as the file, and grep has each of them in memory as a whole.
constexpr std::int64_t mostBytesOfGrep = 512 << 20;

/// Bytes are found in a line of any length if a part of this size is searched at a time.
constexpr std::int64_t pieceBytes = 64 << 20;

/// The part of a question in pieces of that size, in the order of the search; none if it is not larger.
std::vector<Part> piecesOf(Question const &question);

/// Nothing if a command cannot look for this: a line end is in no line, and an argument has no NUL.
std::optional<std::string> text(ShellDialect dialect, std::string_view path, Question const &question);

struct Match {
    std::int64_t offset = 0; ///< in the file
    std::string around = {}; ///< the bytes from `beginOfAround` on; empty: they are not known

    friend bool operator==(Match const &, Match const &) = default;
};

/// What a search has come to.
struct Found {
    std::optional<Match> match = {};
    std::int64_t to = 0; ///< without a match: the end of the part, or `farthest`

    friend bool operator==(Found const &, Found const &) = default;
};

/// Gets the offset that a search which is under way has come to.
using Progress = std::function<void(std::int64_t)>;

struct Answer {
    enum class Kind {
        unknown, ///< the host has no program that can do it
        unreadable,
        searched,
        tooSlow, ///< the host's limit on the time of an expression was reached
        tooLong, ///< so was that on memory, by a line
        failed
    };

    Kind kind = Kind::unknown;
    Found found = {};
    std::string words = {}; ///< of a failure
};

Answer answer(std::string_view output, Question const &question);

/// What `EndableCommand::position` printed.
std::optional<std::int64_t> position(std::string_view output);

/// Thrown when a file can be read and not searched.
class Failed final : public std::exception {
public:
    explicit Failed(std::string text) : words(std::move(text)) {}

    char const *what() const noexcept override { return words.c_str(); }

private:
    std::string words;
};

/// Throws what the failure of a search is called: Failed, or ByteExpression::TooSlow.
void throwIfFailed(Answer const &answer);

} // namespace tw::FileSearch
