#include "Tarnwick/Operations/ProgressState.h"

#include "Tarnwick/Format/Fmt.h"

#include <algorithm>

namespace tw {

std::string ProgressState::text() const
{
    if (!countsBytes())
        return {};
    auto const size = Fmt::size(bytes, EntryKind::file);
    return total ? size + " of " + Fmt::size(*total, EntryKind::file) : size;
}

std::optional<double> ProgressState::share() const
{
    auto const all = whole();
    if (!all || *all < (unit == Unit::items ? 2 : 1))
        return std::nullopt;
    return std::clamp(static_cast<double>(done()) / static_cast<double>(*all), 0.0, 1.0);
}

} // namespace tw
