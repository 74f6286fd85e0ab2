#include "Tarnwick/Viewer/SearchCourse.h"

#include <algorithm>

namespace tw {

using FileSearch::Part;
using FileSearch::Sought;
using FileSearch::Which;

SearchCourse::SearchCourse(Sought const &sought, Which direction, std::int64_t from, std::int64_t size)
    : which(direction),
      origin(std::clamp<std::int64_t>(from, 0, size)),
      total(size),
      firstStep(sought.kind == Sought::Kind::bytes ? bytesOfStep : expressionBytesOfStep),
      step(firstStep),
      overlap(sought.kind == Sought::Kind::bytes ? std::ssize(sought.pattern) - 1 : 0),
      at(origin)
{
}

std::optional<Part> SearchCourse::next()
{
    auto const isDown = which == Which::first;
    if (!isSecondHalf && at == (isDown ? total : 0)) {
        isSecondHalf = true;
        at = isDown ? 0 : total;
    }
    if (isSecondHalf && at == origin)
        return std::nullopt;
    searched += lastStep;
    auto const begin = at;
    if (isDown)
        at = std::min(at + step, isSecondHalf ? origin : total);
    else
        at = std::max<std::int64_t>(at - step, isSecondHalf ? origin : 0);
    lastStep = std::max(at, begin) - std::min(at, begin);
    return Part{std::min(at, begin), std::min(std::max(at, begin) + overlap, total)};
}

void SearchCourse::took(std::chrono::nanoseconds time)
{
    auto const seconds = std::max(std::chrono::duration<double>(time).count(), 1e-6);
    auto const wanted = static_cast<double>(lastStep) / seconds * static_cast<double>(timeOfStep.count());
    auto const most = std::max(std::min(lastStep * mostGrowthOfStep, mostBytesOfStep), firstStep);
    step = static_cast<std::int64_t>(std::clamp(wanted, static_cast<double>(firstStep), static_cast<double>(most)));
}

} // namespace tw
