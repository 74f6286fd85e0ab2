#include "Tarnwick/Viewer/LineCounts.h"

#include <algorithm>

namespace tw {

void LineCounts::note(std::int64_t offset, std::string_view bytes)
{
    if (offset != end().offset || bytes.empty())
        return;
    marks.push_back({.offset = offset + static_cast<std::int64_t>(bytes.size()),
                     .linesBefore = end().linesBefore + std::ranges::count(bytes, '\n')});
}

LineCounts::Mark LineCounts::before(std::int64_t number) const
{
    // A line begins behind the end of the one before it, which may lie in the chunk before the mark.
    auto const behind = std::ranges::lower_bound(marks, number - 1, {}, &Mark::linesBefore);
    return behind == marks.begin() ? marks.front() : *(behind - 1);
}

} // namespace tw
