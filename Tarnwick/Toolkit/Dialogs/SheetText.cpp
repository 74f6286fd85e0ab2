#include "Tarnwick/Toolkit/Dialogs/SheetText.h"

#include <QAbstractTextDocumentLayout>

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

constexpr int usualWidth = 380;

/// Of a longer text so many lines are shown without any room, so that it can be read.
constexpr int leastLines = 14;

/// Of a message that a host makes longer than this, the rest is not shown.
constexpr qsizetype mostCharacters = 16'384;

} // namespace

SheetText::SheetText(QString const &text, QWidget *parent) : QTextEdit(parent), textWidth(usualWidth)
{
    setReadOnly(true);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::ClickFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false); // as a label: on the sheet's own ground
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document()->setDocumentMargin(0);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setPlainText(text.size() > mostCharacters ? text.first(mostCharacters) + QChar(u'…') : text);
}

void SheetText::widen(int width)
{
    textWidth = std::max(textWidth, width);
    updateGeometry();
}

void SheetText::setRoom(int height)
{
    room = height;
    updateGeometry();
}

QSize SheetText::sizeHint() const
{
    std::unique_ptr<QTextDocument> const measured(document()->clone());
    // On a screen of one and a half times the size, lines are higher than without a device.
    measured->documentLayout()->setPaintDevice(viewport());
    measured->setTextWidth(textWidth);
    auto const height = static_cast<int>(std::ceil(measured->size().height()));
    return {textWidth, std::min(height, std::max(room, leastLines * fontMetrics().lineSpacing()))};
}

} // namespace tw
