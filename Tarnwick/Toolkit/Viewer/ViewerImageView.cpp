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
    auto const isFiner =
        shown && picture && shown->wholeWidth == picture->wholeWidth && shown->wholeHeight == picture->wholeHeight;
    picture = shown;
    if (!isFiner)
        chosenScale = 0;
    showFrame(0);
    layOut();
}

/// And the next one when its time has come.
void ViewerImageView::showFrame(std::size_t frame)
{
    constexpr int bytesPerPixel = 4;
    untilNextFrame.stop();
    frameOnShow = frame;
    canvas->image = {};
    canvas->update();
    if (!picture)
        return;
    auto const &pixels = frame == 0 ? picture->pixels : picture->furtherFrames[frame - 1].pixels;
    // The pixels stay those of the picture, which this view holds on to.
    canvas->image = QImage(reinterpret_cast<uchar const *>(pixels.data()), picture->width, picture->height,
                           picture->width * bytesPerPixel, QImage::Format_RGBA8888);
    if (picture->furtherFrames.empty())
        return;
    auto const shownFor = frame == 0 ? picture->firstShownFor : picture->furtherFrames[frame - 1].shownFor;
    untilNextFrame.start(static_cast<int>(shownFor.count()), Qt::PreciseTimer, this);
}

void ViewerImageView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != untilNextFrame.timerId())
        return QScrollArea::timerEvent(event);
    if (isVisible() && !window()->isMinimized())
        showFrame((frameOnShow + 1) % (picture->furtherFrames.size() + 1));
    else
        untilNextFrame.stop(); // goes on when it is seen
}

void ViewerImageView::showEvent(QShowEvent *event)
{
    QScrollArea::showEvent(event);
    if (!untilNextFrame.isActive())
        showFrame(frameOnShow);
}

/// In its file. A drawing has no pixels there, and is as large as it was decoded.
QSizeF ViewerImageView::naturalSize() const
{
    return picture
               ? QSizeF(std::max(picture->wholeWidth, picture->width), std::max(picture->wholeHeight, picture->height))
               : QSizeF();
}

double ViewerImageView::scale() const
{
    if (chosenScale > 0 || !picture)
        return chosenScale;
    auto const room = viewport()->size();
    return std::min({1.0, room.width() / naturalSize().width(), room.height() / naturalSize().height()});
}

void ViewerImageView::layOut()
{
    canvas->resize((naturalSize() * scale()).toSize());
    canvas->update();
    if (picture && canvas->width() > picture->width && onEnlarged)
        onEnlarged();
}

void ViewerImageView::zoomTo(double wanted)
{
    chosenScale = wanted;
    layOut();
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
    auto const most = std::min(largestScale, mostSide / std::max(naturalSize().width(), naturalSize().height()));
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
