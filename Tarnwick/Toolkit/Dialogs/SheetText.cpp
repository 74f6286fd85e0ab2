#include "Tarnwick/Toolkit/Dialogs/SheetText.h"

#include <QAbstractTextDocumentLayout>

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

constexpr int usualWidth = 380;

/// What is longer scrolls: a sheet is to fit on a small screen.
constexpr int mostLines = 14;

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

QSize SheetText::sizeHint() const
{
    std::unique_ptr<QTextDocument> const measured(document()->clone());
    // On a screen of one and a half times the size, lines are higher than without a device.
    measured->documentLayout()->setPaintDevice(viewport());
    measured->setTextWidth(textWidth);
    auto const height = static_cast<int>(std::ceil(measured->size().height()));
    return {textWidth, std::min(height, mostLines * fontMetrics().lineSpacing())};
}

} // namespace tw
