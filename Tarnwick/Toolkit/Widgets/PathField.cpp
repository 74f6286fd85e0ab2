#include "Tarnwick/Toolkit/Widgets/PathField.h"

#include "Tarnwick/Toolkit/Widgets/BusySpinner.h"
#include "Tarnwick/Toolkit/Widgets/PathStrip.h"

#include <QEvent>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>

namespace tw {

PathField::PathField(QWidget *parent) : QLineEdit(parent), busy(new BusySpinner(this))
{
    setFrame(false);
    busy->resize(busy->sizeHint());
    setTextMargins(PathStrip::sideMargin, PathStrip::verticalMargin, 2 * PathStrip::sideMargin + busy->width(),
                   PathStrip::verticalMargin + PathStrip::lineHeight);
    // Tab belongs to the panes; a click or a command brings the keyboard here.
    setFocusPolicy(Qt::ClickFocus);
    updateColors();
}

void PathField::showPath(std::string const &path)
{
    auto const isTyping = hasFocus() && isModified();
    shown = path;
    if (!isTyping)
        giveUp();
}

void PathField::showActive(bool active)
{
    isActive = active;
    updateColors();
}

void PathField::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        submit();
        return;
    case Qt::Key_Escape:
        giveUp();
        if (onLeave)
            onLeave();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void PathField::submit()
{
    auto const isTyped = isModified();
    auto typed = text().toStdString();
    giveUp();
    // The keyboard goes back first: what the path leads to may want to take it somewhere else.
    if (onLeave)
        onLeave();
    if (isTyped && onTyped)
        onTyped(std::move(typed));
    else if (!isTyped && onConfirmed)
        onConfirmed();
}

bool PathField::focusNextPrevChild(bool /*next*/)
{
    giveUp();
    if (onLeave)
        onLeave();
    return true;
}

void PathField::giveUp()
{
    setText(QString::fromStdString(shown));
    // The end of a path tells more than its beginning, except to somebody who is about to edit it.
    setCursorPosition(static_cast<int>(text().size()));
}

void PathField::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    if (onEntered)
        onEntered();
    update();
}

void PathField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    // A menu or another window borrows the keyboard and brings it back.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        giveUp();
    update();
}

void PathField::changeEvent(QEvent *event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        updateColors(); // its own change of the palette is none the second time
}

void PathField::updateColors()
{
    QPalette own;
    if (!isActive)
        own.setColor(QPalette::Text,
                     PathStrip::faded(QGuiApplication::palette().color(QPalette::Text), QGuiApplication::palette()));
    setPalette(own);
}

void PathField::paintEvent(QPaintEvent *event)
{
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    PathStrip::paintLine(painter, rect(), palette(), isActive);
}

void PathField::resizeEvent(QResizeEvent *event)
{
    QLineEdit::resizeEvent(event);
    busy->move(width() - busy->width() - PathStrip::sideMargin,
               (height() - PathStrip::lineHeight - busy->height()) / 2);
}

} // namespace tw
