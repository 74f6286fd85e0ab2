#pragma once

#include "Tarnwick/Operations/NameConflict.h"
#include "Tarnwick/Operations/TransferPlan.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace tw {

/// What the user has answered about taken names, over as many sheets as it takes.
///
/// A sheet may stand for an hour. So the target is asked again after each, and Replace holds only for what was shown.
class AnsweredConflicts {
public:
    using Answer = NameConflict::Answer;

    /// What the target says now takes the place of what it said before.
    void learn(std::vector<NameConflict> conflicts) { taken = std::move(conflicts); }

    /// The taken names that have no answer, or are to be replaced and are not what was shown.
    std::vector<NameConflict> open() const;

    /// One for each of `open()`.
    void answer(std::vector<Answer> const &answers);

    /// Precondition: nothing is open. A name that was to be skipped is skipped also if it is free by now.
    TransferPlan plan(std::vector<std::string> const &names) const;

private:
    struct Given {
        NameConflict shown;
        Answer answer = Answer::skip;
    };

    std::vector<NameConflict> taken;
    std::unordered_map<std::string, Given> given; ///< by name at the source
};

} // namespace tw
