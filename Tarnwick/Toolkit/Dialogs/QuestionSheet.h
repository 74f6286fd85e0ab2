#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

namespace tw {

/// Asks for yes or no, or for one of several ways, or says that something has failed.
class QuestionSheet final : public Sheet {
public:
    QuestionSheet(Dialogs::Confirmation const &question, QWidget *window);

    QuestionSheet(Dialogs::Choice const &question, QWidget *window);

    /// The index of the way that was taken; nothing before, and if the user cancelled.
    std::optional<std::size_t> wayTaken() const { return taken; }

    /// "Operation failed". `words`, if there are any, come up with a button.
    static QuestionSheet *ofError(Text const &message, std::string const &words, QWidget *window);

private:
    struct Failure {
        Text const &message;
    };

    QuestionSheet(Failure failure, QWidget *window);
    void offerDetails(std::string const &words);

    std::optional<std::size_t> taken;
};

} // namespace tw
