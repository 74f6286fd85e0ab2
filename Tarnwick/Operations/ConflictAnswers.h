#pragma once

#include "Tarnwick/Operations/NameConflict.h"

#include <optional>
#include <string>
#include <vector>

namespace tw {

/// What a user answers about taken names: name by name, and for all that are left at once.
class ConflictAnswers {
public:
    using Answer = NameConflict::Answer;

    explicit ConflictAnswers(std::vector<NameConflict> taken) : conflicts(std::move(taken)), given(conflicts.size()) {}

    std::vector<NameConflict> const &names() const noexcept { return conflicts; }

    std::optional<Answer> answer(std::size_t index) const { return given.at(index); }

    /// Nothing takes an answer back. Without effect if the answer is to replace what cannot be replaced.
    void setAnswer(std::size_t index, std::optional<Answer> answer);

    /// The first name without an answer behind `index`, and then before it.
    std::optional<std::size_t> nextOpen(std::size_t index) const;

    std::size_t openCount() const;

    /// True if a name without an answer can be replaced.
    bool isReplaceOpen() const;

    /// Names that cannot be replaced stay without an answer if that is it.
    void answerRest(Answer answer);

    /// Every name has its answer.
    std::vector<Answer> all() const;

private:
    std::vector<NameConflict> const conflicts;
    std::vector<std::optional<Answer>> given;
};

} // namespace tw
