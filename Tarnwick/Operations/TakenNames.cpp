#include "Tarnwick/Operations/TakenNames.h"

#include "TWCore/Async/WhenAll.h"
#include "TWCore/Model/FileOperationError.h"
#include "Tarnwick/Operations/UniqueName.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace tw::TakenNames {

namespace {

/// The search for free names: what was asked about so far, and what is taken of it.
class Search {
public:
    Search(std::vector<std::string> wanted, std::vector<std::string> const &others, bool takesCasesForOne)
        : names(std::move(wanted)), found(names.size()), folds(takesCasesForOne)
    {
        for (auto const &name : names)
            taken.insert(keyOf(name, folds));
        for (auto const &name : others)
            taken.insert(keyOf(name, folds));
    }

    /// The candidates to ask about next; empty when there is a name for each, or no number is left.
    std::vector<std::string> nextCandidates()
    {
        std::vector<std::string> candidates;
        auto const last = std::min(lastNumber + width, highestUniqueNumber);
        for (std::size_t place = 0; place < names.size(); ++place) {
            for (auto number = lastNumber + 1; !found[place] && number <= last; ++number)
                candidates.push_back(numberedName(names[place], number));
        }
        asked.insert(candidates.begin(), candidates.end());
        lastNumber = last;
        // Most first numbers are free, and a long row of taken ones costs few questions.
        width = std::min(width * 8, 512);
        return candidates;
    }

    void learn(std::vector<FolderFacts::Occupant> const &occupants)
    {
        for (auto const &each : occupants)
            taken.insert(keyOf(each.name, folds));
        auto const isTaken = [&](std::string const &name) {
            return !asked.contains(name) || taken.contains(keyOf(name, folds));
        };
        for (std::size_t place = 0; place < names.size(); ++place) {
            if (found[place])
                continue;
            auto unique = uniqueName(names[place], isTaken);
            if (unique == names[place])
                continue;
            taken.insert(keyOf(unique, folds));
            found[place] = std::move(unique);
        }
    }

    std::vector<std::string> result(Operands const &target) const
    {
        std::vector<std::string> all;
        for (std::size_t place = 0; place < names.size(); ++place) {
            if (!found[place])
                throw FileOperationError::Failed("write", target.pathOf(names[place]),
                                                 "the names with all numbers up to " +
                                                     std::to_string(highestUniqueNumber) + " are taken");
            all.push_back(*found[place]);
        }
        return all;
    }

private:
    std::vector<std::string> names;
    std::vector<std::optional<std::string>> found;
    std::unordered_set<std::string> taken; ///< by key
    std::unordered_set<std::string> asked;
    bool folds;
    int lastNumber = 1;
    int width = 1;
};

} // namespace

std::string keyOf(std::string const &name, bool takesCasesForOne)
{
    if (!takesCasesForOne)
        return name;
    std::string key;
    icu::UnicodeString::fromUTF8(name).foldCase().toUTF8String(key);
    return key;
}

Task<Facts> ask(Operands source, Operands target)
{
    std::vector<Task<FolderFacts>> questions;
    questions.push_back(target.browser->factsAbout(target.path, source.names));
    if (source.browser->writer())
        questions.push_back(source.browser->factsAbout(source.path, source.names));
    // At once: a person waits, and the names of thousands of files are a while under way.
    auto answers = co_await whenAll(std::move(questions), 2);
    Facts facts{.source = {}, .target = std::move(answers.front())};
    if (answers.size() > 1)
        facts.source = std::move(answers.back());
    co_return facts;
}

std::vector<NameConflict> conflicts(std::vector<std::string> const &names, Facts const &facts)
{
    std::unordered_map<std::string, FolderFacts::Occupant> taken;
    for (auto const &each : facts.target.taken)
        taken.emplace(each.name, each);
    std::unordered_map<std::string, FolderFacts::Occupant> sources;
    for (auto const &each : facts.source.taken)
        sources.emplace(each.name, each);
    auto const sourceOf = [&](std::string const &name) {
        auto const found = sources.find(name);
        return found != sources.end() ? found->second : FolderFacts::Occupant{.name = name};
    };
    std::unordered_map<std::string, std::string> written; // by what names are to the target
    std::vector<NameConflict> all;
    for (auto const &name : names) {
        auto const [before, isFirst] = written.emplace(keyOf(name, facts.target.takesCasesForOne), name);
        if (auto const found = taken.find(name); found != taken.end())
            all.push_back({.source = sourceOf(name), .target = found->second});
        else if (!isFirst)
            all.push_back({.source = sourceOf(name), .target = sourceOf(before->second)});
    }
    return all;
}

Task<std::vector<std::string>> freeNames(Operands target, std::vector<std::string> names,
                                         std::vector<std::string> others, bool takesCasesForOne)
{
    Search search(std::move(names), others, takesCasesForOne);
    for (;;) {
        auto candidates = search.nextCandidates();
        if (candidates.empty())
            break;
        auto const facts = co_await target.browser->factsAbout(target.path, std::move(candidates));
        search.learn(facts.taken);
    }
    co_return search.result(target);
}

} // namespace tw::TakenNames
