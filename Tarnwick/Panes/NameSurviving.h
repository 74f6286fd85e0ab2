#pragma once

#include "Tarnwick/Table/PaneModel.h"

#include <span>
#include <string>

namespace tw {

/// Where the cursor goes when `removedNames` have gone from the rows: the name below the last of them, else the nearest
/// name above that stays. Empty if none of them is on show, or no name stays.
std::string nameSurviving(PaneModel const &rows, std::span<std::string const> removedNames);

} // namespace tw
