#include "Tarnwick/Toolkit/Program/StartupToken.h"

#include <QGuiApplication>
#include <QInputEvent>

#include <unistd.h>

namespace tw {

StartupToken::StartupToken() : isUnderX11(QGuiApplication::platformName() == QLatin1String("xcb"))
{
    if (isUnderX11)
        qApp->installEventFilter(this);
}

std::string StartupToken::next()
{
    if (lastInput == 0)
        return {};
    return "tarnwick-" + std::to_string(::getpid()) + '-' + std::to_string(++count) + "_TIME" +
           std::to_string(lastInput);
}

bool StartupToken::eventFilter(QObject * /*watched*/, QEvent *event)
{
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::MouseButtonPress ||
        event->type() == QEvent::MouseButtonDblClick)
        lastInput = static_cast<QInputEvent *>(event)->timestamp();
    return false;
}

} // namespace tw
