#include "Tarnwick/Toolkit/Widgets/WrappedText.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace tw {

WrappedText::WrappedText(QWidget *parent) : QWidget(parent) {}

void WrappedText::setText(QString const &text)
{
    if (text == whole)
        return;
    whole = text;
    setAccessibleName(whole);
    updateGeometry();
    update();
}

QStringList WrappedText::linesIn(int width) const
{
    QTextLayout layout(whole, font());
    QTextOption breaks;
    breaks.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere); // a path may have no blanks
    layout.setTextOption(breaks);
    layout.beginLayout();
    QStringList result;
    for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        if (result.size() == mostLines - 1) {
            result << fontMetrics().elidedText(whole.mid(line.textStart()), Qt::ElideRight, width);
            break;
        }
        result << whole.mid(line.textStart(), line.textLength()).trimmed();
    }
    layout.endLayout();
    return result;
}

int WrappedText::heightForWidth(int width) const
{
    auto const count = std::max(static_cast<int>(linesIn(width).size()), 1);
    return count * fontMetrics().lineSpacing();
}

int WrappedText::naturalWidth() const
{
    return static_cast<int>(std::ceil(QFontMetricsF(font()).horizontalAdvance(whole))) + 1;
}

bool WrappedText::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    auto const shown = lines();
    if (shown.isEmpty() || whole.endsWith(shown.last()))
        QToolTip::hideText();
    else
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                           QStringLiteral("<qt>%1</qt>").arg(whole.toHtmlEscaped()), this);
    return true;
}

void WrappedText::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    auto const step = fontMetrics().lineSpacing();
    auto top = 0;
    for (auto const &line : lines()) {
        painter.drawText(QRect(0, top, width(), step), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, line);
        top += step;
    }
}

} // namespace tw
