#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tw {

/// How far some work is.
struct ProgressState {
    /// What is counted to see how far it is.
    enum class Unit {
        bytes,
        items, ///< no bytes are known, and `files` counts what the user has chosen
    };

    std::int64_t bytes = 0;
    std::optional<std::int64_t> total = {}; ///< bytes; nothing if it is not known
    std::string item = {};                  ///< what is being worked on; empty: as before
    std::int64_t files = 0;                 ///< done so far
    std::optional<std::int64_t> totalFiles = {};
    Unit unit = Unit::bytes;

    /// Done so far, and in all, in the unit.
    std::int64_t done() const { return unit == Unit::bytes ? bytes : files; }

    std::optional<std::int64_t> whole() const { return unit == Unit::bytes ? total : totalFiles; }

    /// False for work on a host that tells nothing before its end.
    bool countsBytes() const { return unit == Unit::bytes && (bytes > 0 || total); }

    /// "12K of 3.4M", or the bytes done alone if the total is not known; empty if no bytes are counted.
    std::string text() const;

    /// Between 0 and 1; nothing if the total is not known or below 1, and for a single item.
    std::optional<double> share() const;
};

} // namespace tw
