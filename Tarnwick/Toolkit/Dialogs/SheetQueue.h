#pragma once

#include "Tarnwick/Toolkit/Dialogs/Sheet.h"

#include <QObject>
#include <QPointer>

#include <vector>

namespace tw {

/// The sheets over one window: one is on show, and the others wait for it. Questions go before progress, since work
/// that is under way may itself have something to ask. A question about the window itself goes before all others.
///
/// Threads: main context only.
/// Lifetime: the sheets are the window's children, and go with it.
class SheetQueue final : public QObject {
public:
    explicit SheetQueue(QWidget &window) : owner(&window) { window.installEventFilter(this); }

    /// Null when the window has closed or is gone: there is nothing to show a sheet over.
    QWidget *window() const { return isClosed ? nullptr : owner.data(); }

    /// In the order in which they come up.
    enum class Kind { urgent, question, progress };

    /// Shows a sheet as soon as it is its turn. The actions of the whole program work in it too.
    void add(Sheet &sheet, Kind kind);

    /// Takes a sheet away, answered or not.
    void remove(Sheet &sheet);

    /// Takes all of them away, and accepts no more.
    void close();

    /// What is to work while a sheet is on show as well.
    void setActions(QList<QAction *> actions) { everywhere = std::move(actions); }

protected:
    /// Of the window: not every desktop gives the keyboard to the sheet when the user clicks on the window below it.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Waiting {
        QPointer<Sheet> sheet;
        Kind kind;
    };

    void forget(Sheet const *sheet);
    Sheet *next() const;
    void showNext();

    QPointer<QWidget> const owner;
    bool isClosed = false;
    std::vector<Waiting> sheets; ///< in the order of their asking
    QList<QAction *> everywhere;
};

} // namespace tw
