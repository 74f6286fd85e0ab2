#include "TWCore/Provider/Survey.h"

#include <algorithm>
#include <iterator>

namespace tw {

namespace {

bool knowsItsNodes(Survey::Part const &part)
{
    return static_cast<std::int64_t>(part.nodes.size()) == part.files + part.folders;
}

bool knowsItsFiles(Survey::Part const &part)
{
    return static_cast<std::int64_t>(part.nodes.size()) == part.files;
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

std::optional<std::int64_t> Survey::Part::countOf(Part const &other) const
{
    if (!knowsItsFiles(*this) || !knowsItsFiles(other))
        return std::nullopt;
    std::vector<std::uint64_t> both;
    std::ranges::set_intersection(sorted(nodes), sorted(other.nodes), std::back_inserter(both));
    return static_cast<std::int64_t>(both.size());
}

} // namespace tw
