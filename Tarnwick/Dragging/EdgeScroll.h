#pragma once

#include <chrono>

/// How rows scroll under a drag that is near the first or the last of them on screen.
namespace tw::EdgeScroll {

/// Before the first step, so that a drag on its way through scrolls nothing.
inline constexpr std::chrono::milliseconds delay{300};

/// Between two steps: 25 a second look like one movement.
inline constexpr std::chrono::milliseconds interval{40};

/// The pixels of one step, negative for upwards: the nearer to the edge the more, a row at most. 0 in the middle. `y`
/// and `height` are those of the drag and of the rows on screen.
int step(int y, int height, int rowHeight);

} // namespace tw::EdgeScroll
