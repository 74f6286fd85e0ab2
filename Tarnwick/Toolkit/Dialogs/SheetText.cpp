#include "Tarnwick/Toolkit/Dialogs/SheetText.h"

#include <algorithm>
#include <cmath>

namespace tw {

namespace {

constexpr int textWidth = 380;

/// What is longer scrolls: a sheet is to fit on a small screen.
constexpr int mostLines = 14;

/// Of a message that a host makes longer than this, the rest is not shown.
constexpr qsizetype mostCharacters = 16'384;

} // namespace

SheetText::SheetText(QString const &text, QWidget *parent) : QTextEdit(parent)
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

QSize SheetText::sizeHint() const
{
    std::unique_ptr<QTextDocument> const measured(document()->clone());
    measured->setTextWidth(textWidth);
    auto const height = static_cast<int>(std::ceil(measured->size().height()));
    return {textWidth, std::min(height, mostLines * fontMetrics().lineSpacing())};
}

} // namespace tw
