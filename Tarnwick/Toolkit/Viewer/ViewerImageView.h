#pragma once

#include "TWEngine/Preview/PictureAnswer.h"

#include <QBasicTimer>
#include <QImage>
#include <QScrollArea>

#include <functional>
#include <memory>

namespace tw {

/// A picture, also one that moves, as large as its room, at its own size, or at another one; then it is moved with
/// scroll bars.
class ViewerImageView final : public QScrollArea {
public:
    explicit ViewerImageView(QWidget *parent = nullptr);

    /// The picture is larger on screen than it was decoded.
    std::function<void()> onEnlarged;

    /// Null: nothing. The same picture again, or the same in another resolution, keeps its scale.
    void show(std::shared_ptr<Picture const> const &shown);

    /// All of it, and no larger than it is.
    void fit();
    void zoomTo(double scale);
    void zoomBy(double factor);

    /// In pages of the room.
    void scrollBy(double right, double down);

    /// Of the picture on screen; 1 is the size that it has in its file.
    double scale() const;

    /// Of a picture that moves.
    std::size_t frame() const noexcept { return frameOnShow; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    class Canvas;

    QSizeF naturalSize() const;
    void layOut();
    void showFrame(std::size_t frame);

    std::shared_ptr<Picture const> picture;
    Canvas *const canvas;
    double chosenScale = 0; ///< 0: it fits
    std::size_t frameOnShow = 0;
    QBasicTimer untilNextFrame;
};

} // namespace tw
