#include "Tarnwick/Toolkit/Table/NameEditor.h"

#include <QFocusEvent>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>

#include <algorithm>

namespace tw {

namespace {

/// Beside the text: the frame, the margins that a line edit has inside it, and room for the caret.
constexpr int roomBesideText = 14;

/// A copy is called: what it does may take the function away.
void report(std::function<void()> reported)
{
    if (reported)
        reported();
}

} // namespace

NameEditor::NameEditor(QWidget *table, QRect const &place, QString const &name, qsizetype base)
    : QLineEdit(name, table), leastWidth(place.width())
{
    setAccessibleName(QStringLiteral("Name"));
    setGeometry(place);
    setAutoFillBackground(true);
    connect(this, &QLineEdit::textChanged, this, [this] { fit(); });
    setSelection(0, static_cast<int>(base));
}

void NameEditor::fit()
{
    auto const wanted = fontMetrics().horizontalAdvance(text() + composed) + roomBesideText;
    auto const most = parentWidget()->width() - x();
    resize(std::clamp(wanted, std::min(leastWidth, most), std::max(most, 0)), height());
}

void NameEditor::inputMethodEvent(QInputMethodEvent *event)
{
    composed = event->preeditString();
    QLineEdit::inputMethodEvent(event);
    fit();
}

QString NameEditor::takeText()
{
    if (hasFocus())
        QGuiApplication::inputMethod()->commit();
    if (!composed.isEmpty()) { // the method has not answered, or works for another widget by now
        QInputMethodEvent rest;
        rest.setCommitString(composed);
        inputMethodEvent(&rest);
    }
    return text();
}

void NameEditor::keyPressEvent(QKeyEvent *event)
{
    auto const key = event->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        report(onConfirmed);
    else if (key == Qt::Key_Escape)
        report(onCancelled);
    else
        QLineEdit::keyPressEvent(event);
    event->accept(); // none is for the rows below
}

bool NameEditor::focusNextPrevChild(bool /*next*/)
{
    report(onLeft);
    return true;
}

void NameEditor::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    auto const reason = event->reason();
    // The keyboard comes back from another window, a menu and a question.
    auto const comesBack =
        reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason;
    if (!comesBack)
        report(onLeft);
}

} // namespace tw
