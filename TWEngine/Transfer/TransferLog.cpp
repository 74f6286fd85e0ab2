#include "TWEngine/Transfer/TransferLog.h"

namespace tw {

TransferLog::TransferLog(std::vector<std::string> carried)
{
    names.reserve(carried.size());
    for (auto &name : carried) {
        places.emplace(name, names.size());
        names.push_back({std::move(name)});
    }
}

void TransferLog::begin(std::string_view member, std::int64_t position)
{
    while (member.starts_with("./"))
        member.remove_prefix(2);
    auto const top = member.substr(0, member.find('/'));
    if (current && names[*current].name == top)
        return;
    if (current)
        names[*current].ended = position;
    current.reset();
    auto const found = places.find(std::string(top));
    if (found == places.end())
        return;
    current = found->second;
    names[*current].begun = position;
    names[*current].ended = -1;
}

void TransferLog::passed(std::int64_t position, std::int64_t files)
{
    marks.push_back({position, files});
    while (marks.size() > 1 && marks[1].position <= position - mostInFlight)
        marks.pop_front();
}

void TransferLog::end()
{
    if (current)
        names[*current].ended = marks.back().position;
}

TransferSummary TransferLog::summary(Arrival arrival) const
{
    auto const &arrived = arrival == Arrival::everything ? marks.back() : marks.front();
    TransferSummary summary{.files = arrived.files};
    for (auto const &each : names) {
        if (each.begun < 0)
            summary.untouched.push_back(each.name);
        else if (each.ended >= 0 && each.ended <= arrived.position)
            summary.complete.push_back(each.name);
        else
            summary.partial.push_back(each.name);
    }
    return summary;
}

} // namespace tw
