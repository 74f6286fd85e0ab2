#pragma once

#include "Tarnwick/Table/ColumnLayout.h"

#include <QHeaderView>

#include <functional>

namespace tw {

/// The column titles of a pane. A click on one sorts; a title is dragged to move its column, and the line before a
/// column to make it wider or narrower; two clicks on the line fit it to its contents. The menu chooses the columns.
///
/// The name stretches and stands first, so the line follows the pointer: what a column gains, the name loses.
class PaneHeaderView final : public QHeaderView {
public:
    explicit PaneHeaderView(QWidget *parent);

    /// Other usual widths. For the name: the least that it is left with.
    void propose(ColumnLayout::Widths const &widths);

    /// The user's choices, as `ColumnLayout` writes them.
    std::string choices() const { return layout.text(); }

    void adoptChoices(std::string_view stored);

    std::function<void(PaneColumn column)> onTitleClicked;

    /// The width that the contents of a column need, as far as they are on screen.
    std::function<int(PaneColumn column)> onContentsMeasured;

    /// The columns have got other widths, or are other ones.
    std::function<void()> onFitted;

    /// The user has given a column another width or place, or other columns to the pane.
    std::function<void()> onChoicesChanged;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintSection(QPainter *painter, QRect const &rect, int section) const override;
    QSize sizeHint() const override;

private:
    /// Lays the columns out in the width that there is.
    void fit();

    /// Puts the columns into the order of the layout.
    void arrange();
    void takeOverOrder();

    std::optional<PaneColumn> columnBehindLineAt(int x) const;
    void fillMenu(QMenu &menu);
    void choicesChanged();
    int room() const;

    ColumnLayout layout;
    std::optional<PaneColumn> dragged;
    int grabOffset = 0;       ///< from the pointer to the line when it was grabbed
    bool isArranging = false; ///< the columns are moved by the program and not by the user
};

} // namespace tw
