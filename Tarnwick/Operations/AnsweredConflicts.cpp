#include "Tarnwick/Operations/AnsweredConflicts.h"

#include <utility>

namespace tw {

namespace {

/// The source may have changed since: it is the file that the user wants there.
bool isAsShown(NameConflict const &now, NameConflict const &shown)
{
    if (now.source.kind != shown.source.kind || now.target.kind != shown.target.kind)
        return false;
    if (now.target.kind == EntryKind::directory)
        return true; // its date changes with every file in it, and nothing of it goes
    return now.target.size == shown.target.size && now.target.mtime == shown.target.mtime;
}

} // namespace

std::vector<NameConflict> AnsweredConflicts::open() const
{
    std::vector<NameConflict> all;
    for (auto const &each : taken) {
        auto const found = given.find(each.source.name);
        if (found == given.end() || (found->second.answer == Answer::replace && !isAsShown(each, found->second.shown)))
            all.push_back(each);
    }
    return all;
}

void AnsweredConflicts::answer(std::vector<Answer> const &answers)
{
    auto asked = open();
    for (std::size_t place = 0; place < asked.size(); ++place) {
        auto const name = asked[place].source.name;
        given.insert_or_assign(name, Given{.shown = std::move(asked[place]), .answer = answers.at(place)});
    }
}

TransferPlan AnsweredConflicts::plan(std::vector<std::string> const &names) const
{
    std::vector<std::string> wanted;
    for (auto const &name : names) {
        auto const found = given.find(name);
        if (found == given.end() || found->second.answer != Answer::skip)
            wanted.push_back(name);
    }
    std::vector<Answer> answers;
    for (auto const &each : taken)
        answers.push_back(given.at(each.source.name).answer);
    return TransferPlan::of(wanted, taken, answers);
}

} // namespace tw
