#pragma once

#include "TWCore/Provider/Survey.h"
#include "Tarnwick/Operations/TakenNames.h"
#include "Tarnwick/Operations/TransferPlan.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace tw {

/// The names of a plan that have arrived at the target, where several steps copy them. A name that a later step has
/// replaced, since the target takes cases for one, is not among them, though the target may have a file of that name,
/// kind and size.
class Arrivals {
public:
    Arrivals(TransferPlan const &plan, bool targetTakesCasesForOne)
        : renamed(plan.keepBoth.begin(), plan.keepBoth.end()), takesCasesForOne(targetTakesCasesForOne)
    {
    }

    /// To be called before the names of `step` are copied.
    void forgetReplaced(TransferPlan const &step)
    {
        auto const keyOf = [this](auto const &name) { return TakenNames::keyOf(name, takesCasesForOne); };
        std::unordered_set<std::string> keys;
        for (auto const &each : step.replace)
            keys.insert(keyOf(each.source.name));
        auto const isReplaced = [&](auto const &name) { return keys.contains(keyOf(name)) && !renamed.contains(name); };
        std::erase_if(direct, isReplaced);
        std::erase_if(staged.parts, [&](auto const &part) { return isReplaced(part.first); });
    }

    std::vector<std::string> direct; ///< the target is still to be asked about them
    Survey staged;                   ///< what came through staging folders

private:
    std::unordered_set<std::string> renamed; // they keep clear of all names
    bool takesCasesForOne;
};

} // namespace tw
