#pragma once

#include <QElapsedTimer>
#include <QMenu>

#include <functional>

namespace tw {

/// A menu for names, in which one moves as in a list: it scrolls, Home and End go to the first and the last item, and
/// typing the beginning of a title goes to it. Names of hosts have no letters to underline, and in some styles what
/// does not fit on the screen would be shown in many columns.
///
/// What a title is in full, before it was shortened or escaped for the menu, is the data of its action.
class TypeAheadMenu final : public QMenu {
public:
    explicit TypeAheadMenu(QWidget *parent);

    /// True for a key that types a sign that can stand in a name.
    static bool isLetter(QKeyEvent const &event);

    /// Asked first about each key. True: the key was used.
    std::function<bool(QKeyEvent const &event)> onKey;

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
