#pragma once

#include "Tarnwick/Operations/NameConflict.h"

#include <string>
#include <vector>

namespace tw {

/// Under which names a copy or a move writes, once the user has answered for those that are taken.
struct TransferPlan {
    struct Renamed {
        std::string name; ///< at the source
        std::string newName;

        friend bool operator==(Renamed const &, Renamed const &) = default;
    };

    std::vector<std::string> free = {};     ///< written under their own names, which nothing has at the target
    std::vector<NameConflict> replace = {}; ///< written over what has their names
    std::vector<std::string> keepBoth = {}; ///< to be written under names that are free
    std::vector<Renamed> renamed = {};      ///< `keepBoth`, with the names found for them

    /// `answers` has one for each of `conflicts`. A name to be skipped is left out.
    static TransferPlan of(std::vector<std::string> const &names, std::vector<NameConflict> const &conflicts,
                           std::vector<NameConflict::Answer> const &answers);

    bool isEmpty() const { return free.empty() && replace.empty() && keepBoth.empty(); }

    /// All that are written under their own names, with or without something in the way.
    std::vector<std::string> keptNames() const;

    /// All names that are written at the target.
    std::vector<std::string> writtenNames() const;

    /// The plan for some of its names.
    TransferPlan only(std::vector<std::string> const &names) const;

    /// The plan in parts, one after the other, so that no part has two names that are one at the target. It is one part
    /// unless the target takes cases for one.
    std::vector<TransferPlan> rounds(bool takesCasesForOne) const;

    /// The plan in parts, one after the other, each of which replaces files of no more than `mostBytes` together, or
    /// one file. The first part has all that replaces nothing. An empty plan has no parts.
    std::vector<TransferPlan> batches(std::int64_t mostBytes) const;

    /// All names of the source that are copied.
    std::vector<std::string> allNames() const;
};

} // namespace tw
