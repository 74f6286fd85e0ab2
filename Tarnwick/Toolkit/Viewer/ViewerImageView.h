#pragma once

#include "TWEngine/Preview/PictureAnswer.h"

#include <QImage>
#include <QScrollArea>

#include <memory>

namespace tw {

/// A picture as large as its room, at its own size, or at another one; then it is moved with scroll bars.
class ViewerImageView final : public QScrollArea {
public:
    explicit ViewerImageView(QWidget *parent = nullptr);

    /// Null: nothing. The same picture again keeps its scale.
    void show(std::shared_ptr<Picture const> const &shown);

    /// All of it, and no larger than it is.
    void fit();
    void zoomBy(double factor);

    /// In pages of the room.
    void scrollBy(double right, double down);

    /// Of the picture on screen.
    double scale() const;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    class Canvas;

    void layOut();

    std::shared_ptr<Picture const> picture;
    Canvas *const canvas;
    double chosenScale = 0; ///< 0: it fits
};

} // namespace tw
