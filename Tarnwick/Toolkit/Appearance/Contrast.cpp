#include "Tarnwick/Toolkit/Appearance/Contrast.h"

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

double linear(float channel)
{
    auto const value = double{channel};
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(QColor const &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

float mixed(float a, float b, double share)
{
    return std::clamp(static_cast<float>(a * share + b * (1 - share)), 0.0F, 1.0F);
}

} // namespace

double contrast(QColor const &a, QColor const &b)
{
    auto const [dark, light] = std::minmax({luminance(a), luminance(b)});
    return (light + 0.05) / (dark + 0.05);
}

QColor blend(QColor const &a, QColor const &b, double share)
{
    return QColor::fromRgbF(mixed(a.redF(), b.redF(), share), mixed(a.greenF(), b.greenF(), share),
                            mixed(a.blueF(), b.blueF(), share));
}

QColor readableOn(QColor const &background, QColor const &wanted, double least)
{
    QColor const black(0, 0, 0);
    QColor const white(255, 255, 255);
    auto const &goal = contrast(background, black) > contrast(background, white) ? black : white;
    constexpr int steps = 10;
    for (int step = 0; step < steps; ++step) {
        auto const candidate = blend(goal, wanted, double{1.0} * step / steps);
        if (contrast(background, candidate) >= least)
            return candidate;
    }
    return goal;
}

} // namespace tw
