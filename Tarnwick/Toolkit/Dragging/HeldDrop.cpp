#include "Tarnwick/Toolkit/Dragging/HeldDrop.h"

#include <QCoreApplication>
#include <QDrag>
#include <QGuiApplication>
#include <QKeyEvent>

namespace tw {

HeldDrop::HeldDrop(QDrag &drag)
{
    connect(&drag, &QDrag::actionChanged, this, [this](Qt::DropAction now) { action = now; });
    // The filter that is installed last sees events first, and the drag installs its own when it begins.
    QMetaObject::invokeMethod(this, [this] { qApp->installEventFilter(this); }, Qt::QueuedConnection);
}

HeldDrop::~HeldDrop() = default;

bool HeldDrop::isPossible()
{
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

void HeldDrop::letThrough()
{
    state = State::over;
    QCoreApplication::sendEvent(releasedOver ? releasedOver.data() : qApp, release.get());
}

void HeldDrop::cancel()
{
    state = State::over;
    QDrag::cancel();
}

bool HeldDrop::eventFilter(QObject *watched, QEvent *event)
{
    if (state == State::held)
        return passOn(*watched, *event);
    if (state == State::over || !watched->isWindowType())
        return false;
    if (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove)
        isOverOwnWindow = true;
    else if (event->type() == QEvent::DragLeave)
        isOverOwnWindow = false;
    if (!holds(*watched, *event))
        return false;
    state = State::held;
    releasedOver = watched;
    release.reset(event->clone());
    QGuiApplication::changeOverrideCursor(Qt::ArrowCursor);
    // Afterwards, since it may end the drag.
    QMetaObject::invokeMethod(
        this,
        [this] {
            // A link to a copy that goes away would lead nowhere.
            action == Qt::LinkAction ? cancel() : onDropped();
        },
        Qt::QueuedConnection);
    return true;
}

bool HeldDrop::holds(QObject & /*window*/, QEvent const &event)
{
    return event.type() == QEvent::MouseButtonRelease && !isOverOwnWindow && action != Qt::IgnoreAction;
}

/// The drag takes all keys, and what the mouse does. Now they are for this program's windows.
bool HeldDrop::passOn(QObject &receiver, QEvent &event)
{
    switch (event.type()) {
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent &>(event).key() == Qt::Key_Escape) {
            cancel();
            return true;
        }
        break;
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
        break;
    default:
        return false;
    }
    receiver.event(&event);
    return true;
}

} // namespace tw
