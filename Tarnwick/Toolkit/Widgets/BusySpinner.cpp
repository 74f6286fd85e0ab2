#include "Tarnwick/Toolkit/Widgets/BusySpinner.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"

#include <QPainter>
#include <QTimerEvent>

namespace tw {

namespace {

constexpr int edge = 14;
constexpr qreal stroke = 2;

/// 25 small steps a second, and a little less than one turn in it.
constexpr int stepMilliseconds = 40;
constexpr int stepDegrees = 14;

constexpr int arcDegrees = 270;
constexpr int sixteenths = 16; // the unit of QPainter's angles

} // namespace

BusySpinner::BusySpinner(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void BusySpinner::start()
{
    if (isSpinning())
        return;
    timer.start(stepMilliseconds, this);
    update();
}

void BusySpinner::stop()
{
    if (!isSpinning())
        return;
    timer.stop();
    update();
}

QSize BusySpinner::sizeHint() const
{
    return {edge, edge};
}

void BusySpinner::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != timer.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    angle = (angle + stepDegrees) % 360;
    update();
}

void BusySpinner::paintEvent(QPaintEvent * /*event*/)
{
    if (!isSpinning())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    auto const color = blend(palette().color(QPalette::WindowText), palette().color(QPalette::Window), 0.7);
    painter.setPen(QPen(color, stroke, Qt::SolidLine, Qt::RoundCap));
    auto const square = QRectF(0, 0, edge, edge).adjusted(stroke, stroke, -stroke, -stroke);
    painter.drawArc(square, -angle * sixteenths, arcDegrees * sixteenths);
}

} // namespace tw
