#pragma once

#include "Tarnwick/Toolkit/Viewer/RowPainter.h"
#include "Tarnwick/Viewer/ViewerScreen.h"

#include <QAbstractScrollArea>

#include <functional>
#include <optional>

namespace tw {

/// The rows of a file. It knows those that are on screen and no others, so that a file of any size costs the same.
class ViewerTextView final : public QAbstractScrollArea {
public:
    explicit ViewerTextView(QWidget *parent = nullptr);

    /// What the user does.
    std::function<void(int rows, int columns)> onResized;
    std::function<void(int rows)> onRows;
    std::function<void(int columns)> onColumns;
    std::function<void(double share)> onShare;
    std::function<void(ViewerPlace from, ViewerPlace to)> onSelected;

    void show(ViewerScreen const &screen);

    /// Of the text, in the unit of the window's measures.
    void setTextSize(double size);

    /// The rows that fit.
    int rowCount() const;
    int columnCount() const;

    ViewerScreen const &screen() const noexcept { return shown; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

    void scrollContentsBy(int /*dx*/, int /*dy*/) override {}

private:
    void barUsed(int action);
    void showBar();
    void reportSize();
    ViewerPlace placeAt(QPointF point) const;
    RowPainter::Selection selectionIn(std::size_t row) const;

    ViewerScreen shown;
    double textSize = 12;
    RowPainter painter;
    std::optional<ViewerPlace> pressedAt;
    QPoint turned; ///< of the wheel, in eighths of a degree that were not yet a row
};

} // namespace tw
