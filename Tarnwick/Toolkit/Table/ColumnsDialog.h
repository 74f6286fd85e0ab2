#pragma once

#include "Tarnwick/Table/ColumnLayout.h"

#include <QDialog>

#include <functional>
#include <string>

class QListWidget;
class QPushButton;

namespace tw {

/// Chooses the columns of the panes and their order, with the keyboard or the mouse. The name is not among them: it is
/// always there, and first.
class ColumnsDialog final : public QDialog {
public:
    /// `choices` as `ColumnLayout` writes them.
    ColumnsDialog(std::string_view choices, QWidget *window);

    /// The choices that were agreed to.
    std::function<void(std::string const &choices)> onAccepted;

    std::string choices() const;

    QListWidget &columns() const { return *list; }

    QPushButton &upButton() const { return *up; }

    QPushButton &downButton() const { return *down; }

    /// Shows the usual columns again, with their usual widths.
    void showUsual();

private:
    void layOut();
    void showLayout();
    void moveCurrent(int by);
    void enableButtons();

    ColumnLayout layout{{}}; ///< with what the dialog does not change: the widths
    QListWidget *const list;
    QPushButton *const up;
    QPushButton *const down;
};

} // namespace tw
