#include "Tarnwick/Toolkit/Program/HeldKeys.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace tw {

HeldKeys::HeldKeys(QCoreApplication &application)
{
    application.installEventFilter(this);
}

bool HeldKeys::eventFilter(QObject *watched, QEvent *event)
{
    // Windows get keys first, and pass them on to widgets.
    if (!watched->isWindowType())
        return false;
    if (event->type() == QEvent::KeyPress) {
        auto const &press = *static_cast<QKeyEvent *>(event);
        if (isRepeat(press))
            return windows.value(codeOf(press)) != watched;
        windows.insert(codeOf(press), watched);
    } else if (event->type() == QEvent::KeyRelease) {
        auto const &release = *static_cast<QKeyEvent *>(event);
        released = codeOf(release);
        releasedAt = release.timestamp();
    }
    return false;
}

/// Shift changes what a key means while the key is held.
HeldKeys::Code HeldKeys::codeOf(QKeyEvent const &event)
{
    return event.nativeScanCode() != 0 ? event.nativeScanCode() : static_cast<Code>(event.key());
}

/// X11 repeats a key as a release and a press at the same time. Qt does not see the repetition if it reads the two one
/// after the other, as on a busy machine.
bool HeldKeys::isRepeat(QKeyEvent const &press) const
{
    return press.isAutoRepeat() || (codeOf(press) == released && press.timestamp() == releasedAt);
}

} // namespace tw
