#include "Tarnwick/Toolkit/Widgets/ButtonLines.h"

#include <QKeyEvent>
#include <QPushButton>

#include <algorithm>

namespace tw {

namespace {

/// To the button at `place` of a line, or to the last one of a shorter line.
void goTo(std::vector<ButtonLines::Line> const &lines, std::ptrdiff_t line, std::ptrdiff_t place)
{
    auto const &there = lines[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(line, 0, std::ssize(lines) - 1))];
    there[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(place, 0, std::ssize(there) - 1))]->setFocus(
        Qt::OtherFocusReason);
}

} // namespace

ButtonLines::ButtonLines(QWidget &owner, std::function<std::vector<Line>()> asked)
    : QObject(&owner), lines(std::move(asked))
{
}

void ButtonLines::watch(std::span<QPushButton *const> buttons)
{
    for (auto *const button : buttons)
        button->installEventFilter(this);
}

std::vector<ButtonLines::Line> ButtonLines::reachable() const
{
    auto all = lines();
    for (auto &line : all)
        std::erase_if(line, [](auto const *button) { return button->isHidden() || !button->isEnabled(); });
    std::erase_if(all, [](auto const &line) { return line.empty(); });
    return all;
}

bool ButtonLines::takeKeyboard() const
{
    auto const all = reachable();
    if (all.empty())
        return false;
    goTo(all, 0, 0);
    return true;
}

bool ButtonLines::eventFilter(QObject *watched, QEvent *event)
{
    auto *const button = qobject_cast<QPushButton *>(watched);
    if (button && event->type() == QEvent::KeyPress && handleKey(*button, static_cast<QKeyEvent const *>(event)->key()))
        return true;
    // Not every style shows which button has the keyboard if the keyboard came without Tab.
    if (button && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut))
        button->setDefault(event->type() == QEvent::FocusIn);
    if (button && event->type() == QEvent::FocusIn && onChosen)
        onChosen(*button);
    return QObject::eventFilter(watched, event);
}

bool ButtonLines::handleKey(QPushButton &button, int key) const
{
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        button.click();
        return true;
    }
    if (key == Qt::Key_Escape) {
        if (onLeave)
            onLeave();
        return true;
    }
    auto const all = reachable();
    auto const row =
        std::ranges::find_if(all, [&](auto const &line) { return std::ranges::find(line, &button) != line.end(); });
    if (row == all.end())
        return false;
    auto const line = row - all.begin();
    auto const place = std::ranges::find(*row, &button) - row->begin();
    switch (key) {
    case Qt::Key_Up:
        goTo(all, line - 1, place);
        return true;
    case Qt::Key_Down:
        goTo(all, line + 1, place);
        return true;
    case Qt::Key_Left:
        goTo(all, line, place - 1);
        return true;
    case Qt::Key_Right:
        goTo(all, line, place + 1);
        return true;
    default:
        return false;
    }
}

} // namespace tw
