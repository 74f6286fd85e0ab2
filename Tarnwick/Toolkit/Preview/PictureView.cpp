#include "Tarnwick/Toolkit/Preview/PictureView.h"

#include <QPainter>

namespace tw {

PictureView::PictureView(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
}

void PictureView::setPicture(QImage picture, Growth wanted)
{
    image = std::move(picture);
    growth = wanted;
    image.setDevicePixelRatio(devicePixelRatioF());
    update();
}

void PictureView::paintEvent(QPaintEvent * /*event*/)
{
    auto size = image.deviceIndependentSize();
    if (size.isEmpty())
        return;
    if (growth == Growth::toRoom)
        size.scale(QSizeF(this->size().shrunkBy({margin, margin, margin, margin})), Qt::KeepAspectRatio);
    // It was made for the room that there was.
    if (size.width() > width() || size.height() > height())
        size.scale(QSizeF(this->size()), Qt::KeepAspectRatio);
    QRectF place(QPointF(), size);
    place.moveCenter(QRectF(rect()).center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(place.topLeft().toPoint(), size), image);
}

} // namespace tw
