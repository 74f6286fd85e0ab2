#include "Tarnwick/Toolkit/Commands/FunctionKeyButton.h"

#include <QPainter>
#include <QTimerEvent>

#include <cmath>

namespace tw {

namespace {

constexpr int fontSize = 11;
constexpr int buttonHeight = 24;
constexpr int padding = 12;
constexpr double radius = 5;

constexpr int tickMilliseconds = 16;
constexpr double sharePerTick = 0.28;
constexpr double nearEnough = 0.01;

/// A button at rest has the look of a key cap, so that it is seen to be a button.
constexpr double restingFill = 0.05;
constexpr double restingOutline = 0.12;
constexpr double hoverFill = 0.1;
constexpr double hoverOutline = 0.16;
constexpr double pressedFill = 0.1;

QColor withAlpha(QColor color, double alpha)
{
    color.setAlphaF(static_cast<float>(std::min(alpha, 1.0)));
    return color;
}

} // namespace

FunctionKeyButton::FunctionKeyButton(QString const &text, QWidget *parent) : QAbstractButton(parent)
{
    setText(text);
    setFocusPolicy(Qt::NoFocus);
    auto small = font();
    small.setPixelSize(fontSize);
    setFont(small);
}

double FunctionKeyButton::washAfterTick(double wash, double target)
{
    auto const next = wash + (target - wash) * sharePerTick;
    return std::abs(target - next) < nearEnough ? target : next;
}

QSize FunctionKeyButton::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(text()) + 2 * padding, buttonHeight};
}

void FunctionKeyButton::enterEvent(QEnterEvent * /*event*/)
{
    hover(true);
}

void FunctionKeyButton::leaveEvent(QEvent * /*event*/)
{
    hover(false);
}

void FunctionKeyButton::hover(bool isOver)
{
    isHovering = isOver;
    timer.start(tickMilliseconds, Qt::PreciseTimer, this);
}

void FunctionKeyButton::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != timer.timerId())
        return;
    wash = washAfterTick(wash, target());
    if (wash == target())
        timer.stop();
    update();
}

void FunctionKeyButton::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    auto const ink = palette().color(QPalette::WindowText);
    auto const pressed = isDown() ? pressedFill : 0.0;
    painter.setBrush(withAlpha(ink, restingFill + wash * hoverFill + pressed));
    painter.setPen(withAlpha(ink, restingOutline + wash * hoverOutline));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setPen(ink);
    painter.drawText(rect(), Qt::AlignCenter, text());
}

} // namespace tw
