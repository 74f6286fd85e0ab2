#include "Tarnwick/Operations/MoveCheck.h"

namespace tw {

namespace {

Survey::Part const *partOf(Survey const &survey, std::string const &name)
{
    auto const found = survey.parts.find(name);
    return found != survey.parts.end() ? &found->second : nullptr;
}

bool haveOneShape(Survey::Part const &one, Survey::Part const &other)
{
    return one.files == other.files && one.folders == other.folders && one.bytes == other.bytes &&
           one.shape == other.shape;
}

} // namespace

MoveCheck MoveCheck::of(std::vector<std::string> const &names, Survey const &before, Survey const &after,
                        Survey const &target)
{
    MoveCheck check;
    for (auto const &name : names) {
        auto const *const first = partOf(before, name);
        auto const *const last = partOf(after, name);
        auto const *const copy = partOf(target, name);
        if (!first || !last || *first != *last)
            check.changed.push_back(name);
        else if (!copy || !haveOneShape(*last, *copy))
            check.unequal.push_back(name);
        else
            check.arrived.push_back(name);
    }
    return check;
}

} // namespace tw
