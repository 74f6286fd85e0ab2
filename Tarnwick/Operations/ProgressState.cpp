#include "Tarnwick/Operations/ProgressState.h"

#include "Tarnwick/Format/Fmt.h"

#include <algorithm>

namespace tw {

std::string ProgressState::text() const
{
    auto const done = Fmt::size(bytes, EntryKind::file);
    return total ? done + " of " + Fmt::size(*total, EntryKind::file) : done;
}

std::optional<double> ProgressState::share() const
{
    if (!total || *total < 1)
        return std::nullopt;
    return std::clamp(static_cast<double>(bytes) / static_cast<double>(*total), 0.0, 1.0);
}

} // namespace tw
