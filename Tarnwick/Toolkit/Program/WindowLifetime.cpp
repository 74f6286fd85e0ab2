#include "Tarnwick/Toolkit/Program/WindowLifetime.h"

#include <QEvent>
#include <QPointer>
#include <QWidget>

#include <utility>

namespace tw::WindowLifetime {

namespace {

/// A child of the window, and gone with it.
class CloseWatch final : public QObject {
public:
    CloseWatch(QWidget *watched, std::function<void()> toRun)
        : QObject(watched), window(watched), action(std::move(toRun))
    {
        window->installEventFilter(this);
    }

    ~CloseWatch() override { run(); }

    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        // The window may still refuse, which is seen only when it has had the event itself.
        if (event->type() == QEvent::Close)
            QMetaObject::invokeMethod(this, [this] { runIfClosed(); }, Qt::QueuedConnection);
        return false;
    }

private:
    void runIfClosed()
    {
        if (!window->isVisible())
            run();
    }

    void run()
    {
        if (auto const once = std::exchange(action, nullptr))
            once();
    }

    QWidget *const window;
    std::function<void()> action;
};

} // namespace

void onClose(QWidget *window, std::function<void()> action)
{
    new CloseWatch(window, std::move(action));
}

} // namespace tw::WindowLifetime
