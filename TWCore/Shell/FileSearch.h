#pragma once

#include "TWCore/Shell/ShellDialect.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

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

/// Where the matches of a part begin: bytes that begin behind it would not lie in it whole.
Part beginningsIn(Part part, Sought const &sought);

/// How far around a part an expression looks: what is before it says whether a line begins, and a match may go on
/// behind it.
constexpr std::int64_t contextBytes = 4096;
constexpr std::int64_t mostBytesOfMatch = 64 * 1024;

/// What an expression is run over, for its matches in a part.
Part withContext(Part part);

/// Nothing if a command cannot look for this: a line end is in no line, and an argument has no NUL.
std::optional<std::string> text(ShellDialect dialect, std::string_view path, Sought const &sought, Part part,
                                Which which);

struct Answer {
    enum class Kind {
        unknown, ///< the host has no program that can do it
        searched,
        tooSlow ///< the host's limits on an expression were reached
    };

    Kind kind = Kind::unknown;
    std::optional<std::int64_t> offset = {}; ///< in the file; nothing: there is no match
};

/// `beginnings` are those of the part that was searched.
Answer answer(std::string_view output, Part beginnings);

} // namespace tw::FileSearch
