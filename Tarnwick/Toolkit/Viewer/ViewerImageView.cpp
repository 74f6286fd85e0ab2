#include "Tarnwick/Toolkit/Viewer/ViewerImageView.h"

#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace tw {

namespace {

constexpr double smallestScale = 0.05;
constexpr double largestScale = 16;
constexpr double wheelFactor = 1.25;

/// A picture that is made larger than this on screen is cut by the toolkit.
constexpr double mostSide = 30'000;

} // namespace

/// Paints the part that is on screen.
class ViewerImageView::Canvas final : public QWidget {
public:
    using QWidget::QWidget;

    QImage image;

protected:
    void paintEvent(QPaintEvent * /*event*/) override
    {
        if (image.isNull())
            return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, width() < image.width());
        painter.drawImage(rect(), image);
    }
};

ViewerImageView::ViewerImageView(QWidget *parent) : QScrollArea(parent), canvas(new Canvas)
{
    setWidget(canvas);
    setAlignment(Qt::AlignCenter);
    setFrameShape(QFrame::NoFrame);
    setBackgroundRole(QPalette::Base);
    setFocusPolicy(Qt::NoFocus);
}

void ViewerImageView::show(std::shared_ptr<Picture const> const &shown)
{
    if (shown == picture)
        return;
    constexpr int bytesPerPixel = 4;
    picture = shown;
    chosenScale = 0;
    // The pixels stay those of the picture, which this view holds on to.
    canvas->image = picture ? QImage(reinterpret_cast<uchar const *>(picture->pixels.data()), picture->width,
                                     picture->height, picture->width * bytesPerPixel, QImage::Format_RGBA8888)
                            : QImage();
    layOut();
}

double ViewerImageView::scale() const
{
    if (chosenScale > 0 || !picture)
        return chosenScale;
    auto const room = viewport()->size();
    return std::min({1.0, static_cast<double>(room.width()) / picture->width,
                     static_cast<double>(room.height()) / picture->height});
}

void ViewerImageView::layOut()
{
    canvas->resize((QSizeF(canvas->image.size()) * scale()).toSize());
    canvas->update();
}

void ViewerImageView::fit()
{
    chosenScale = 0;
    layOut();
}

void ViewerImageView::zoomBy(double factor)
{
    if (!picture)
        return;
    auto const most = std::min(largestScale, mostSide / std::max(picture->width, picture->height));
    chosenScale = std::clamp(scale() * factor, smallestScale, most);
    layOut();
}

void ViewerImageView::scrollBy(double right, double down)
{
    auto const move = [](QScrollBar &bar, double pages) {
        bar.setValue(bar.value() + static_cast<int>(pages * bar.pageStep()));
    };
    move(*horizontalScrollBar(), right);
    move(*verticalScrollBar(), down);
}

void ViewerImageView::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    layOut();
}

void ViewerImageView::wheelEvent(QWheelEvent *event)
{
    if (!event->modifiers().testFlag(Qt::ControlModifier))
        return QScrollArea::wheelEvent(event);
    zoomBy(event->angleDelta().y() > 0 ? wheelFactor : 1 / wheelFactor);
    event->accept();
}

} // namespace tw
