#include "Tarnwick/Dragging/EdgeScroll.h"

#include <algorithm>

namespace tw::EdgeScroll {

int step(int y, int height, int rowHeight)
{
    // A row and a half at each edge. In a low table most of the height stays quiet.
    auto const zone = std::max(std::min(rowHeight * 3 / 2, height / 4), 1);
    auto const speed = [&](int depth) { return std::max(std::min(depth, zone) * rowHeight / zone, 1); };
    if (y < zone)
        return -speed(zone - y);
    if (y >= height - zone)
        return speed(y - (height - zone) + 1);
    return 0;
}

} // namespace tw::EdgeScroll
