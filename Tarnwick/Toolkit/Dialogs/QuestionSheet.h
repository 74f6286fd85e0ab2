#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

namespace tw {

/// Asks for yes or no, or says that something has failed.
class QuestionSheet final : public Sheet {
public:
    QuestionSheet(Dialogs::Confirmation const &question, QWidget *window);

    /// How the sheet finishes if the other way is chosen.
    static constexpr int other = 2;

    /// "Operation failed". `words`, if there are any, come up with a button.
    static QuestionSheet *ofError(Text const &message, std::string const &words, QWidget *window);

private:
    struct Failure {
        Text const &message;
    };

    QuestionSheet(Failure failure, QWidget *window);
    void offerDetails(std::string const &words);
};

} // namespace tw
