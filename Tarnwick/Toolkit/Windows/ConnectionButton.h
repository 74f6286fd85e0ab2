#pragma once

#include "Tarnwick/Connections/ConnectionItem.h"

#include <QAbstractButton>

#include <functional>

namespace tw {

class TypeAheadMenu;

/// Says what a pane is connected to, and opens the menu from which another connection is chosen. In a menu of many
/// hosts, letters leave those that have them in their names.
///
/// It never takes the keyboard: the menu has it while it is open, and then it is where it was.
class ConnectionButton final : public QAbstractButton {
public:
    explicit ConnectionButton(QWidget *parent = nullptr);

    /// "local", or the name of a host.
    void showConnection(std::string const &name);

    /// The button of the pane that is not the active one steps back.
    void showActive(bool active);

    /// Opens the menu under the button, on the next turn of the event loop: not inside the event that asked for it.
    void openMenu(std::vector<ConnectionItem> items);

    /// Replaces what is in the menu if it is open, or is about to be. The item that the user has gone to stays so.
    void updateMenu(std::vector<ConnectionItem> items);

    /// Of its text, as much as there is room for.
    QString shownTitle() const;

    TypeAheadMenu &menu() const { return *choices; }

    /// The menu is wanted: the button was pressed.
    std::function<void()> onMenuWanted;

    std::function<void(ConnectionItem const &item)> onPicked;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    enum class Opening { closed, onNextTurn, open };

    void popUp();
    bool filterKey(QKeyEvent const &event);
    void setFilter(QString letters);
    void addFilterLine();
    void fillMenu();
    void addChoice(ConnectionItem const &item);
    QRect titleRect() const;
    QColor ink() const;

    TypeAheadMenu *const choices;
    std::vector<ConnectionItem> items;
    QString filter; ///< what was typed in a menu of many hosts
    Opening opening = Opening::closed;
    bool isHost = false;
    bool isActive = false;
};

} // namespace tw
