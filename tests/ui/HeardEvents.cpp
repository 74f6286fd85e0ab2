#include "tests/ui/HeardEvents.h"

#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

#include <private/qguiapplication_p.h>

namespace tw::test {

namespace {

struct Heard {
    QAccessible::Event type;
    QObject const *object;
    std::string name;
};

// The handler has no argument of ours.
std::vector<Heard> all;

void hear(QAccessibleEvent *event)
{
    auto const *const interface = event->accessibleInterface();
    all.push_back(
        {event->type(), event->object(), interface ? interface->text(QAccessible::Name).toStdString() : std::string()});
}

void setActive(bool active)
{
    // As the desktop's bus of screen readers does; the platform of the tests has none.
    QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(active);
}

} // namespace

HeardEvents::HeardEvents()
{
    all.clear();
    QAccessible::installUpdateHandler(hear);
    setActive(true);
}

HeardEvents::~HeardEvents()
{
    setActive(false);
    QAccessible::installUpdateHandler(nullptr);
}

std::vector<std::string> HeardEvents::namesAt(QAccessible::Event type, QObject const &object)
{
    std::vector<std::string> names;
    for (auto const &each : all) {
        if (each.type == type && each.object == &object)
            names.push_back(each.name);
    }
    return names;
}

} // namespace tw::test
