#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"
#include "Tarnwick/Toolkit/Widgets/PathStrip.h"
#include "Tarnwick/Toolkit/Widgets/StatusLineInterface.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTimerEvent>
#include <QToolTip>

namespace tw {

namespace {

constexpr int sideMargin = 8;
constexpr int verticalMargin = 3;

/// Long enough to be seen, and over before the next key.
constexpr int flashMilliseconds = 150;

} // namespace

ElidedLabel::ElidedLabel(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    StatusLineInterface::install();
}

void ElidedLabel::setText(QString const &text)
{
    if (text == whole)
        return;
    whole = text;
    setAccessibleName(whole);
    update();
}

void ElidedLabel::showActive(bool active)
{
    isActive = active;
    update();
}

void ElidedLabel::flash()
{
    flashing.start(flashMilliseconds, this);
    update();
}

void ElidedLabel::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != flashing.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    flashing.stop();
    update();
}

QSize ElidedLabel::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(whole) + 2 * sideMargin, fontMetrics().height() + 2 * verticalMargin};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, sizeHint().height()};
}

QString ElidedLabel::shortened() const
{
    return fontMetrics().elidedText(whole, Qt::ElideRight, width() - 2 * sideMargin);
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    // Asked for when it is wanted, so that a resize need not keep it up to date. Plain text, whatever a name contains.
    if (shortened() == whole)
        QToolTip::hideText();
    else
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                           QStringLiteral("<qt>%1</qt>").arg(whole.toHtmlEscaped()), this);
    return true;
}

void ElidedLabel::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    auto const ink = palette().color(isFlashing() ? QPalette::HighlightedText : foregroundRole());
    if (isFlashing())
        painter.fillRect(rect(), palette().color(QPalette::Highlight));
    painter.setPen(isActive || isFlashing() ? ink
                                            : blend(ink, palette().color(backgroundRole()), PathStrip::inactiveShare));
    painter.drawText(rect().adjusted(sideMargin, 0, -sideMargin, 0),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, shortened());
}

} // namespace tw
