#pragma once

#include "Tarnwick/Toolkit/Dialogs/ConflictModel.h"

#include <QTreeView>

#include <functional>

namespace tw {

/// The taken names of a question, any number of them. Letters, and the menu over a row, answer for the rows that are
/// selected.
class ConflictTable final : public QTreeView {
    Q_OBJECT

public:
    ConflictTable(ConflictModel &names, QWidget *parent);

    /// The rows that fit into `height`, and no more than there are.
    void fitInto(int width, int height);

    /// Behind each answer.
    std::function<void()> onAnswered;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void answer(std::optional<NameConflict::Answer> answer);
    void openMenu(QPoint where);

    ConflictModel &taken;
};

} // namespace tw
