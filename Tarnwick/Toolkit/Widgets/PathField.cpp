#include "Tarnwick/Toolkit/Widgets/PathField.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Widgets/BusySpinner.h"
#include "Tarnwick/Toolkit/Widgets/CompletionList.h"
#include "Tarnwick/Toolkit/Widgets/PathStrip.h"

#include <QEvent>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyleOptionFrame>
#include <QToolTip>

#include <utility>

namespace tw {

namespace {

/// What a QLineEdit leaves free on both sides of its text.
constexpr int textInset = 2;

} // namespace

PathField::PathField(QWidget *parent) : QLineEdit(parent), busy(new BusySpinner(this))
{
    setFrame(false);
    setAcceptDrops(false); // what is dropped here goes into a folder, and is no text
    busy->resize(busy->sizeHint());
    setTextMargins(PathStrip::sideMargin, PathStrip::verticalMargin, 2 * PathStrip::sideMargin + busy->width(),
                   PathStrip::verticalMargin + PathStrip::lineHeight);
    // A click beside the path and a command bring the keyboard here. A click on a part of the path does not, nor does
    // Tab, which belongs to the panes, nor a window that opens.
    setFocusPolicy(Qt::NoFocus);
    setLayoutDirection(Qt::LeftToRight); // a path begins at the left, whatever names are in it
    setMouseTracking(true);
    setAccessibleName(Wording::shown("Path"));
    connect(this, &QLineEdit::textChanged, this, [this] {
        if (!isReplacing)
            closeCompletions(); // what is typed now is something else
    });
    updateColors();
}

bool PathField::isEdited() const
{
    // Also in a window that is in the background.
    return window()->focusWidget() == this;
}

void PathField::showPath(std::string const &path)
{
    auto const isTyping = isEdited() && isModified();
    shown = path;
    crumbs.setPath(QString::fromStdString(shown));
    arrangeParts();
    if (!isTyping)
        giveUp();
}

void PathField::startEditing()
{
    setFocus(Qt::ShortcutFocusReason);
    selectAll();
}

void PathField::resumeEditing(std::string const &typed)
{
    if (isEdited() && isModified())
        return;
    setFocus(Qt::OtherFocusReason);
    replaceText(typed);
}

void PathField::showCompletion(PathCompletion found)
{
    if (!isEdited() || text().toStdString() != found.asked())
        return;
    completion.emplace(std::move(found));
    replaceText(completion->text());
    listCompletions();
}

CompletionList *PathField::completions() const
{
    return list && list->isVisible() ? list.data() : nullptr;
}

void PathField::listCompletions()
{
    if (completion->choices().size() < 2) {
        closeCompletions();
        return;
    }
    if (!list) {
        list = new CompletionList(*this);
        list->onPicked = [this](int row) {
            completion->choose(static_cast<std::size_t>(row));
            replaceText(completion->text());
            closeCompletions();
        };
    }
    QStringList names;
    for (auto const &name : completion->choices())
        names += QString::fromStdString(name);
    list->showNames(names);
    list->showCurrent(completion->chosen());
}

/// True if there was something to close.
bool PathField::closeCompletions()
{
    auto const wasOpen = completions() != nullptr;
    if (wasOpen)
        list->hide();
    return wasOpen;
}

bool PathField::isOnCompletion() const
{
    return completion && text().toStdString() == completion->text();
}

/// False if there is no other name to go to.
bool PathField::turnCompletion(PathCompletion::Turn direction)
{
    if (!isOnCompletion())
        return false;
    auto const before = completion->text();
    completion->turn(direction);
    if (completion->text() == before)
        return false;
    replaceText(completion->text());
    if (completions())
        list->showCurrent(completion->chosen());
    return true;
}

/// As if it had been typed: it can be undone.
void PathField::replaceText(std::string const &text)
{
    QScopedValueRollback const replacing(isReplacing, true); // selected text goes before the new one comes
    selectAll();
    insert(QString::fromStdString(text));
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
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (completions())
            turnCompletion(event->key() == Qt::Key_Down ? PathCompletion::Turn::forward
                                                        : PathCompletion::Turn::backward);
        else
            QLineEdit::keyPressEvent(event);
        return;
    case Qt::Key_Escape:
        if (completions()) {
            replaceText(completion->asked());
            closeCompletions();
            return;
        }
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

/// Tab completes, and goes on to the next name; Shift+Tab to the one before.
bool PathField::focusNextPrevChild(bool next)
{
    if (!turnCompletion(next ? PathCompletion::Turn::forward : PathCompletion::Turn::backward) && onCompletionWanted)
        onCompletionWanted(text().toStdString());
    return true;
}

void PathField::giveUp()
{
    closeCompletions();
    completion.reset();
    setText(QString::fromStdString(shown));
    // The end of a path tells more than its beginning.
    setCursorPosition(static_cast<int>(text().size()));
    update();
}

void PathField::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    hover(std::nullopt);
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
    else
        closeCompletions();
    update();
}

void PathField::changeEvent(QEvent *event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        updateColors(); // its own change of the palette is none the second time
    else if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        arrangeParts();
}

void PathField::updateColors()
{
    QPalette own;
    if (!isActive)
        own.setColor(QPalette::Text,
                     PathStrip::faded(QGuiApplication::palette().color(QPalette::Text), QGuiApplication::palette()));
    setPalette(own);
}

void PathField::mousePressEvent(QMouseEvent *event)
{
    pressed.reset();
    if (!isEdited()) {
        if (event->button() == Qt::LeftButton)
            pressed = crumbs.componentsAt(event->position().toPoint());
        if (pressed)
            return;
        setFocus(Qt::MouseFocusReason);
    }
    QLineEdit::mousePressEvent(event);
}

void PathField::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (isEdited())
        QLineEdit::mouseDoubleClickEvent(event);
    else
        PathField::mousePressEvent(event);
}

void PathField::mouseReleaseEvent(QMouseEvent *event)
{
    auto const part = std::exchange(pressed, std::nullopt);
    if (!part) {
        QLineEdit::mouseReleaseEvent(event);
        return;
    }
    // A press that is drawn away is called off.
    if (crumbs.componentsAt(event->position().toPoint()) == part && onPartClicked)
        onPartClicked(*part);
}

void PathField::mouseMoveEvent(QMouseEvent *event)
{
    if (isEdited())
        QLineEdit::mouseMoveEvent(event);
    else
        hover(crumbs.componentsAt(event->position().toPoint()));
}

void PathField::leaveEvent(QEvent *event)
{
    QLineEdit::leaveEvent(event);
    hover(std::nullopt);
}

void PathField::hover(std::optional<int> components)
{
    if (hovered == components)
        return;
    hovered = components;
    setCursor(hovered ? Qt::PointingHandCursor : Qt::IBeamCursor);
    update();
}

bool PathField::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QLineEdit::event(event);
    if (isEdited() || crumbs.shown().toStdString() == shown)
        QToolTip::hideText();
    else // plain text, whatever a name contains
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                           QStringLiteral("<qt>%1</qt>").arg(QString::fromStdString(shown).toHtmlEscaped()), this);
    return true;
}

void PathField::paintEvent(QPaintEvent *event)
{
    if (isEdited())
        QLineEdit::paintEvent(event);
    QPainter painter(this);
    if (!isEdited()) {
        QStyleOptionFrame panel;
        initStyleOption(&panel);
        style()->drawPrimitive(QStyle::PE_PanelLineEdit, &panel, &painter, this);
        painter.setPen(palette().color(QPalette::Text));
        crumbs.paint(painter, hovered);
    }
    PathStrip::paintLine(painter, rect(), palette(), isActive);
}

void PathField::arrangeParts()
{
    crumbs.arrange(fontMetrics(), rect().marginsRemoved(textMargins()).adjusted(textInset, 0, -textInset, 0));
    update();
}

void PathField::resizeEvent(QResizeEvent *event)
{
    QLineEdit::resizeEvent(event);
    closeCompletions(); // which stand where the field was
    busy->move(width() - busy->width() - PathStrip::sideMargin,
               (height() - PathStrip::lineHeight - busy->height()) / 2);
    arrangeParts();
}

} // namespace tw
