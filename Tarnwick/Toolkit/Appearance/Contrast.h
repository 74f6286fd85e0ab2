#pragma once

#include <QColor>

namespace tw {

/// The ratio of the luminances of two colours, from 1 for the same to 21 for black and white, as WCAG defines it.
double contrast(QColor const &a, QColor const &b);

/// `wanted`, moved towards black or white, whichever is further from `background`, until the two have a contrast of
/// at least `least`, or as much as there can be.
QColor readableOn(QColor const &background, QColor const &wanted, double least);

/// `share` of `a`, from 0 to 1, and the rest of `b`.
QColor blend(QColor const &a, QColor const &b, double share);

} // namespace tw
