#include "Tarnwick/Settings/PaneFontSize.h"

#include <algorithm>
#include <charconv>

namespace tw {

namespace {

constexpr double usual = 12;
constexpr double smallest = 9;
constexpr double largest = 20;

} // namespace

double paneFontSize(Defaults const &defaults)
{
    auto const stored = defaults.text("tw.paneFontSize");
    if (!stored)
        return usual;
    double size = 0; // from_chars knows no locale: the setting always has a point
    auto const end = stored->data() + stored->size();
    auto const [stop, error] = std::from_chars(stored->data(), end, size);
    if (error != std::errc() || stop != end || !(size > 0))
        return usual;
    return std::clamp(size, smallest, largest);
}

} // namespace tw
