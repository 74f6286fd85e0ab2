#include "Tarnwick/Toolkit/Commands/CommandShortcuts.h"

#include "Tarnwick/Toolkit/Commands/KeyStrokes.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

#include <utility>

namespace tw {

CommandShortcuts::CommandShortcuts(QWidget &commanded, Handler wanted)
    : QObject(&commanded), window(commanded), handler(std::move(wanted))
{
    window.installEventFilter(this);
}

bool CommandShortcuts::eventFilter(QObject *watched, QEvent *event)
{
    // Asked of the widget with the keyboard first, and then of those above it up to the window.
    if (event->type() == QEvent::ShortcutOverride && watched == &window)
        return claim(*static_cast<QKeyEvent *>(event));
    if (event->type() == QEvent::KeyPress && claimed)
        return take(*static_cast<QKeyEvent *>(event));
    return false;
}

bool CommandShortcuts::claim(QKeyEvent &event)
{
    auto const command = commandOf(keyStrokeOf(event));
    if (!command)
        return false;
    claimed = {event.key(), event.modifiers(), *command};
    qApp->installEventFilter(this); // the press goes to the widget with the keyboard, which must not see it
    event.accept();
    return true;
}

bool CommandShortcuts::take(QKeyEvent const &event)
{
    qApp->removeEventFilter(this);
    auto const expected = *std::exchange(claimed, std::nullopt);
    if (event.key() != expected.key || event.modifiers() != expected.modifiers)
        return false;
    handler(expected.command, event.isAutoRepeat() ? Press::repeated : Press::first);
    return true;
}

} // namespace tw
