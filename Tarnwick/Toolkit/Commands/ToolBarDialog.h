#pragma once

#include "Tarnwick/Commands/ToolBarLayout.h"

#include <QDialog>

#include <functional>

class QCheckBox;
class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace tw {

/// Arranges the tool bar: what can be added on the left, what stands on the bar on the right. Items are moved with the
/// mouse or with the buttons.
class ToolBarDialog final : public QDialog {
public:
    ToolBarDialog(ToolBarLayout const &layout, QWidget *window);

    /// The layout that was agreed to.
    std::function<void(ToolBarLayout const &layout)> onAccepted;

    ToolBarLayout layout() const;

    QListWidget &offered() const { return *left; }

    QListWidget &chosen() const { return *right; }

    QPushButton &addButton() const { return *adding; }

    QPushButton &removeButton() const { return *removing; }

    QPushButton &upButton() const { return *up; }

    QPushButton &downButton() const { return *down; }

    QCheckBox &labels() const { return *withLabels; }

private:
    void layOut();
    void connectLists();
    void showLayout(ToolBarLayout const &layout);
    QListWidgetItem *itemFor(std::string_view identifier) const;
    void offerTheRest();
    void enableButtons();
    void addCurrent();
    void removeCurrent();
    void moveCurrent(int by);

    QListWidget *const left;
    QListWidget *const right;
    QPushButton *const adding;
    QPushButton *const removing;
    QPushButton *const up;
    QPushButton *const down;
    QCheckBox *const withLabels;
};

} // namespace tw
