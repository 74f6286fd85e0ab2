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

void TransferLog::begin(std::string_view member, std::int64_t position, std::int64_t files)
{
    while (member.starts_with("./"))
        member.remove_prefix(2);
    auto const top = member.substr(0, member.find('/'));
    if (current && names[*current].name == top)
        return;
    endCurrent(position, files);
    auto const found = places.find(std::string(top));
    if (found == places.end())
        return;
    current = found->second;
    names[*current].begun = position;
    names[*current].ended = -1;
    names[*current].filesBefore = files;
}

void TransferLog::endCurrent(std::int64_t position, std::int64_t files)
{
    if (!current)
        return;
    auto &name = names[*current];
    name.ended = position;
    name.files = files - name.filesBefore;
    current.reset();
}

void TransferLog::passed(std::int64_t position, std::int64_t files)
{
    marks.push_back({position, files});
    while (marks.size() > 1 && marks[1].position <= position - mostInFlight)
        marks.pop_front();
}

void TransferLog::end(std::int64_t position, std::int64_t files)
{
    endCurrent(position, files);
}

void TransferLog::blame(Blamed const &blamed)
{
    isAnyBlamed = isAnyBlamed || blamed.isEverything || !blamed.names.empty();
    for (auto &each : names)
        each.isBlamed = each.isBlamed || blamed.isEverything || blamed.names.contains(each.name);
}

TransferSummary TransferLog::summary(Arrival arrival) const
{
    auto const &arrived = arrival == Arrival::everything ? marks.back() : marks.front();
    TransferSummary summary;
    std::int64_t filesOfComplete = 0;
    for (auto const &each : names) {
        bool const isComplete = each.ended >= 0 && each.ended <= arrived.position && !each.isBlamed;
        filesOfComplete += isComplete ? each.files : 0;
        if (isComplete)
            summary.complete.push_back(each.name);
        else
            (each.begun < 0 ? summary.untouched : summary.partial).push_back(each.name);
    }
    summary.files = isAnyBlamed ? filesOfComplete : arrived.files;
    return summary;
}

} // namespace tw
