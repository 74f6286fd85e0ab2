#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

namespace tw {

/// Asks for yes or no, or says that something has failed.
class QuestionSheet final : public Sheet {
public:
    QuestionSheet(Dialogs::Confirmation const &question, QWidget *window);

    /// "Operation failed".
    static QuestionSheet *ofError(Text const &message, QWidget *window);

private:
    struct Failure {
        Text const &message;
    };

    QuestionSheet(Failure failure, QWidget *window);
};

} // namespace tw
