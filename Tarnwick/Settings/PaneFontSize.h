#pragma once

#include "Tarnwick/Settings/Defaults.h"

namespace tw {

/// The setting "tw.paneFontSize": the size of a pane's rows in the unit of the window's measures, 1/96 of an inch at
/// a scale of 1, so 12 is what desktops call 9 points. 12 if there is none, and kept between 9 and 20.
double paneFontSize(Defaults const &defaults);

} // namespace tw
