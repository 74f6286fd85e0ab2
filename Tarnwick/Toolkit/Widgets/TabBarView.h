#pragma once

#include <QWidget>

#include <functional>
#include <vector>

class QToolButton;

namespace tw {

class TabStrip;

/// The bar with the tabs of one side: the tabs, a button for one more, and a button with a menu of all tabs if they do
/// not fit.
///
/// It never has the keyboard, which stays with the rows: what it does has keys and menu items of its own.
class TabBarView final : public QWidget {
public:
    /// So high that the tables of both sides begin at the same height.
    static constexpr int barHeight = 22;

    struct Item {
        QString title;
        QString toolTip;
        bool isRemote = false;
    };

    explicit TabBarView(QWidget *parent = nullptr);

    void showTabs(std::vector<Item> const &items, int selected);

    /// The tabs alone.
    TabStrip &strip() const { return *tabs; }

    QToolButton &newTabButton() const { return *newTab; }

    /// Lists all tabs; hidden if they fit.
    QToolButton &overflowButton() const { return *overflow; }

    std::function<void(int index)> onSelect;
    std::function<void(int index)> onClose;
    std::function<void(int index)> onCloseOthers;
    std::function<void(int index)> onDuplicate;
    std::function<void()> onNew;
    std::function<void(int from, int to)> onReorder;

    QSize sizeHint() const override { return {0, barHeight}; }

    QSize minimumSizeHint() const override { return {0, barHeight}; }

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void connectTabs();
    void listTabs();
    void showMenuOf(int index, QPoint const &where);
    void placeButtons();

    TabStrip *const tabs;
    QToolButton *const newTab;
    QToolButton *const overflow;
    bool isShowing = false; ///< what changes the tabs is this program, not the user
};

} // namespace tw
