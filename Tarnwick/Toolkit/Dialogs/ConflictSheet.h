#pragma once

#include "Tarnwick/Operations/Dialogs.h"
#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

class QLabel;
class QPushButton;

namespace tw {

class ConflictModel;
class ConflictTable;

/// Asks what to do with names that the target has already. The rows are answered one by one or several together, and a
/// button answers for all that are left.
class ConflictSheet final : public Sheet {
    Q_OBJECT

public:
    ConflictSheet(Dialogs::Conflicts question, QWidget *window);

    /// After the sheet was accepted: one for each name.
    std::vector<NameConflict::Answer> answers() const;

    ConflictTable &table() const { return *names; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QPushButton *addAnswer(char const *title, NameConflict::Answer answer);
    void showCount();

    ConflictModel *const model;
    ConflictTable *const names;
    QPushButton *const replace;
    QPushButton *const keepBoth;
    QPushButton *const skip;
    QLabel *const count;
    QPushButton *proceed = nullptr; // null for a question about one name
};

} // namespace tw
