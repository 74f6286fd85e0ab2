#include "Tarnwick/Operations/TransferPlan.h"

#include "Tarnwick/Operations/TakenNames.h"

#include <unordered_map>
#include <unordered_set>

namespace tw {

TransferPlan TransferPlan::of(std::vector<std::string> const &names, std::vector<NameConflict> const &conflicts,
                              std::vector<NameConflict::Answer> const &answers)
{
    std::unordered_map<std::string, std::size_t> places;
    for (std::size_t place = 0; place < conflicts.size(); ++place)
        places.emplace(conflicts[place].source.name, place);
    TransferPlan plan;
    for (auto const &name : names) {
        auto const found = places.find(name);
        if (found == places.end())
            plan.free.push_back(name);
        else if (answers[found->second] == NameConflict::Answer::replace)
            plan.replace.push_back(conflicts[found->second]);
        else if (answers[found->second] == NameConflict::Answer::keepBoth)
            plan.keepBoth.push_back(name);
    }
    return plan;
}

std::vector<std::string> TransferPlan::keptNames() const
{
    auto all = free;
    for (auto const &each : replace)
        all.push_back(each.source.name);
    return all;
}

std::vector<std::string> TransferPlan::writtenNames() const
{
    auto all = keptNames();
    for (auto const &each : renamed)
        all.push_back(each.newName);
    return all;
}

TransferPlan TransferPlan::only(std::vector<std::string> const &names) const
{
    std::unordered_set<std::string> const some(names.begin(), names.end());
    auto part = *this;
    std::erase_if(part.free, [&](auto const &name) { return !some.contains(name); });
    std::erase_if(part.replace, [&](auto const &each) { return !some.contains(each.source.name); });
    std::erase_if(part.keepBoth, [&](auto const &name) { return !some.contains(name); });
    std::erase_if(part.renamed, [&](auto const &each) { return !some.contains(each.name); });
    return part;
}

std::vector<TransferPlan> TransferPlan::rounds(bool takesCasesForOne) const
{
    if (!takesCasesForOne)
        return {*this};
    std::unordered_map<std::string, std::size_t> seen; // how often, by key
    std::vector<std::vector<std::string>> names;
    for (auto const &name : allNames()) {
        auto const round = seen[TakenNames::keyOf(name, takesCasesForOne)]++;
        names.resize(std::max(names.size(), round + 1));
        names[round].push_back(name);
    }
    std::vector<TransferPlan> parts;
    for (auto const &some : names)
        parts.push_back(only(some));
    return parts;
}

std::vector<TransferPlan> TransferPlan::batches(std::int64_t mostBytes) const
{
    std::vector<TransferPlan> parts;
    if (isEmpty())
        return parts;
    parts.push_back(*this);
    parts.back().replace.clear();
    std::int64_t bytes = 0;
    for (auto const &each : replace) {
        bytes += each.source.size;
        if (bytes > mostBytes && !parts.back().isEmpty()) {
            parts.emplace_back();
            bytes = each.source.size;
        }
        parts.back().replace.push_back(each);
    }
    return parts;
}

std::vector<std::string> TransferPlan::allNames() const
{
    auto all = keptNames();
    all.insert(all.end(), keepBoth.begin(), keepBoth.end());
    return all;
}

} // namespace tw
