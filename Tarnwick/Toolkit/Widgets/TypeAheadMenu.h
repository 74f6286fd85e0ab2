#pragma once

#include <QElapsedTimer>
#include <QMenu>

namespace tw {

/// A menu for names, in which one moves as in a list: it scrolls, Home and End go to the first and the last item, and
/// typing the beginning of a title goes to it. Names of hosts have no letters to underline, and in some styles what
/// does not fit on the screen would be shown in many columns.
///
/// What a title is in full, before it was shortened or escaped for the menu, is the data of its action.
class TypeAheadMenu final : public QMenu {
public:
    explicit TypeAheadMenu(QWidget *parent);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void goTo(QString const &letters);
    template <class Iterator>
    void goToFirstOf(Iterator begin, Iterator end);

    QString typed;
    QElapsedTimer sinceTyped;
};

} // namespace tw
