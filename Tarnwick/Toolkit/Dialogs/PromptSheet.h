#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

class QLabel;
class QLineEdit;

namespace tw {

/// Asks for a line of text.
class PromptSheet final : public Sheet {
public:
    PromptSheet(Dialogs::Prompt const &question, QWidget *window);

    /// What the user has typed, without the white space around it.
    std::string text() const;

    QLineEdit &field() const { return *line; }

    /// What is wrong with the text; empty if nothing is.
    QString complaint() const;

    void accept() override;

private:
    Dialogs::Objection const objection;
    QLineEdit *const line;
    QLabel *const complaintLine;
};

} // namespace tw
