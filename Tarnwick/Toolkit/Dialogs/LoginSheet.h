#pragma once

#include "TWEngine/Passwords/LoginQuestion.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

class QCheckBox;
class QLineEdit;

namespace tw {

/// Asks what ssh wants to know for a login, in ssh's own words.
class LoginSheet final : public Sheet {
public:
    LoginSheet(LoginQuestion const &question, QWidget *window);

    /// After the sheet was accepted.
    LoginAnswer answer() const;

    void accept() override;

private:
    void addField(LoginQuestion const &question);
    void addFingerprint(LoginQuestion const &question);
    void addChoice(char const *yes, char const *no);

    // Null where nothing is typed.
    QLineEdit *field = nullptr;
    QCheckBox *remember = nullptr;
    std::string choice; ///< what a button stands for
};

} // namespace tw
