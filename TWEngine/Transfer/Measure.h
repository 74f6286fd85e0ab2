#pragma once

#include "TWCore/Shell/ShellDialect.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace tw {

/// What there is to copy.
struct Measure {
    std::int64_t bytes = 0;
    std::optional<std::int64_t> files = {}; ///< everything but folders

    /// From what `TransferCommands::measureThere` printed.
    static Measure parse(ShellDialect dialect, std::string_view output);

    using Clock = std::chrono::steady_clock;

    /// Of a path of this machine: the size of a file, or of everything below a folder, folders included. What cannot be
    /// looked at is left out. Blocks. Nothing if it was stopped, or the time was up, before the end of a folder.
    static std::optional<Measure> here(std::string const &path, std::stop_token const &stop,
                                       Clock::time_point until = Clock::time_point::max());

    Measure &operator+=(Measure const &other);
};

} // namespace tw
