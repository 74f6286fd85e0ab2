#pragma once

#include "TWCore/Shell/ShellDialect.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The command that looks for bytes in a part of a file, on the host that the file is on.
namespace tw::FileSearch {

enum class Which { first, last };

/// A part of a file: matches that lie in it whole.
struct Part {
    std::int64_t from = 0;
    std::int64_t to = 0;
};

/// Nothing if such bytes cannot be looked for by a command: a line end is none of a line, and an argument has no NUL.
std::optional<std::string> text(ShellDialect dialect, std::string_view path, std::string_view bytes, Part part,
                                Which which);

struct Answer {
    bool isKnown = false;                    ///< false: the host has no program that can do it
    std::optional<std::int64_t> offset = {}; ///< in the file; nothing: there is no match
};

Answer answer(std::string_view output, Part part);

} // namespace tw::FileSearch
