#include "Tarnwick/Operations/MoveCheck.h"

namespace tw {

namespace {

Survey::Part const *partOf(Survey const &survey, std::string const &name)
{
    auto const found = survey.parts.find(name);
    return found != survey.parts.end() ? &found->second : nullptr;
}

} // namespace

MoveCheck MoveCheck::of(std::vector<std::string> const &names, Surveys const &surveys,
                        std::unordered_set<std::string> const &merged)
{
    MoveCheck check;
    for (auto const &name : names) {
        auto const *const first = partOf(surveys.before, name);
        auto const *const last = partOf(surveys.after, name);
        auto const *const copy = partOf(surveys.target, name);
        if (!first || !last || *first != *last)
            check.changed.push_back(name);
        else if (!copy || !(merged.contains(name) ? copy->holds(*last) : copy->hasShapeOf(*last)))
            check.unequal.push_back(name);
        else
            check.arrived.push_back(name);
    }
    return check;
}

} // namespace tw
