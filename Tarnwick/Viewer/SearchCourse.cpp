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
      at(origin),
      mayGoOn(sought.kind == Sought::Kind::bytes && direction == Which::first)
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

std::int64_t SearchCourse::farthest() const
{
    auto const begin = at - lastStep; // of a search that goes down
    return mayGoOn && !isSecondHalf && total - begin <= mostBytesAtOnce ? total : 0;
}

void SearchCourse::took(std::chrono::nanoseconds time, std::int64_t to)
{
    if (auto const end = farthest(); end > 0 && to >= end) {
        lastStep += end - at;
        at = end;
    } else if (end > 0) {
        mayGoOn = false; // the host cannot, or the file grows
    }
    auto const seconds = std::max(std::chrono::duration<double>(time).count(), 1e-6);
    auto const wanted = static_cast<double>(lastStep) / seconds * static_cast<double>(timeOfStep.count());
    auto const most = std::max(std::min(lastStep * mostGrowthOfStep, mostBytesOfStep), firstStep);
    step = static_cast<std::int64_t>(std::clamp(wanted, static_cast<double>(firstStep), static_cast<double>(most)));
}

} // namespace tw
