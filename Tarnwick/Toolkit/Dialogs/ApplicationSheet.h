#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

class QLineEdit;
class QListWidget;
class QPushButton;

namespace tw {

/// Asks which application opens a file. What is typed leaves the applications that have it in their name or keywords;
/// arrows choose among them meanwhile.
class ApplicationSheet final : public Sheet {
public:
    ApplicationSheet(Dialogs::ApplicationChoice const &question, QWidget *window);

    /// The identifier of the application that is selected; empty if none is.
    std::string chosen() const;

    QLineEdit &field() const { return *search; }

    QListWidget &list() const { return *names; }

    void accept() override;

protected:
    /// Of the field: keys that go through the list.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void add(Application const &application);
    void filter(QString const &text);

    QLineEdit *const search;
    QListWidget *const names;
    QPushButton *open = nullptr;
};

} // namespace tw
