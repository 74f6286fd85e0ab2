#include "Tarnwick/Toolkit/Program/QtMainContext.h"

#include <QCoreApplication>
#include <QEvent>

#include <mutex>

namespace tw {

namespace {

QEvent::Type wakeEvent()
{
    static auto const type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

} // namespace

struct QtMainContext::Target {
    std::mutex mutex;
    // Under the mutex.
    QObject *receiver;

    void wake()
    {
        std::lock_guard const lock(mutex);
        if (receiver)
            QCoreApplication::postEvent(receiver, new QEvent(wakeEvent()));
    }
};

QtMainContext::QtMainContext()
    : target(std::make_shared<Target>()), main(std::make_shared<MainContext>([shared = target] { shared->wake(); }))
{
    std::lock_guard const lock(target->mutex);
    target->receiver = this;
}

QtMainContext::~QtMainContext()
{
    std::lock_guard const lock(target->mutex);
    target->receiver = nullptr;
}

bool QtMainContext::event(QEvent *event)
{
    if (event->type() != wakeEvent())
        return QObject::event(event);
    main->runPending();
    return true;
}

} // namespace tw
