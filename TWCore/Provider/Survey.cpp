#include "TWCore/Provider/Survey.h"

#include <algorithm>

namespace tw {

namespace {

bool knowsItsNodes(Survey::Part const &part)
{
    return static_cast<std::int64_t>(part.nodes.size()) == part.files + part.folders;
}

std::vector<std::uint64_t> sorted(std::vector<std::uint64_t> nodes)
{
    std::ranges::sort(nodes);
    return nodes;
}

} // namespace

bool Survey::Part::holds(Part const &other) const
{
    return knowsItsNodes(*this) && knowsItsNodes(other) && std::ranges::includes(sorted(nodes), sorted(other.nodes));
}

} // namespace tw
