#pragma once

#include "TWCore/Provider/Survey.h"
#include "Tarnwick/Operations/TakenNames.h"
#include "Tarnwick/Operations/TransferPlan.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace tw {

/// The names of a plan that have arrived at the target, where several rounds copy them. A name that a later round has
/// replaced is not among them, though the target may have a file of that name, kind and size.
class Arrivals {
public:
    explicit Arrivals(TransferPlan const &plan) : renamed(plan.keepBoth.begin(), plan.keepBoth.end()) {}

    /// To be called before the names of `round` are copied.
    void forgetReplaced(TransferPlan const &round)
    {
        std::unordered_set<std::string> keys;
        for (auto const &each : round.replace)
            keys.insert(TakenNames::keyOf(each.source.name, true));
        auto const isReplaced = [&](auto const &name) {
            return keys.contains(TakenNames::keyOf(name, true)) && !renamed.contains(name);
        };
        std::erase_if(direct, isReplaced);
        std::erase_if(staged.parts, [&](auto const &part) { return isReplaced(part.first); });
    }

    std::vector<std::string> direct; ///< the target is still to be asked about them
    Survey staged;                   ///< what came through staging folders

private:
    std::unordered_set<std::string> renamed; // they keep clear of all names
};

} // namespace tw
