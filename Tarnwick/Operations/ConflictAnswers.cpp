#include "Tarnwick/Operations/ConflictAnswers.h"

#include "TWCore/Check.h"

#include <algorithm>

namespace tw {

std::optional<std::size_t> ConflictAnswers::nextOpen(std::size_t index) const
{
    for (std::size_t step = 1; step <= given.size(); ++step) {
        auto const candidate = (index + step) % given.size();
        if (!given[candidate])
            return candidate;
    }
    return std::nullopt;
}

std::size_t ConflictAnswers::openCount() const
{
    return static_cast<std::size_t>(std::ranges::count(given, false, &std::optional<Answer>::has_value));
}

void ConflictAnswers::setAnswer(std::size_t index, std::optional<Answer> answer)
{
    if (answer != Answer::replace || conflicts.at(index).isReplaceable())
        given.at(index) = answer;
}

bool ConflictAnswers::isReplaceOpen() const
{
    for (std::size_t index = 0; index < given.size(); ++index) {
        if (!given[index] && conflicts[index].isReplaceable())
            return true;
    }
    return false;
}

void ConflictAnswers::answerRest(Answer answer)
{
    for (std::size_t index = 0; index < given.size(); ++index) {
        if (!given[index])
            setAnswer(index, answer);
    }
}

std::vector<NameConflict::Answer> ConflictAnswers::all() const
{
    std::vector<Answer> answers;
    answers.reserve(given.size());
    for (auto const &each : given) {
        check(each.has_value(), "a name has no answer");
        answers.push_back(*each);
    }
    return answers;
}

} // namespace tw
