#include "tests/ui/FakeNotifications.h"

namespace tw::test {

FakeNotifications::FakeNotifications(QDBusConnection connection) : bus(std::move(connection))
{
    bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this, QDBusConnection::ExportAllSlots);
    bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
}

uint FakeNotifications::Notify(QString const & /*program*/, uint /*replaces*/, QString const & /*icon*/,
                               QString const &summary, QString const &body, QStringList const & /*actions*/,
                               QVariantMap const & /*hints*/, int /*time*/)
{
    shown << summary + QStringLiteral(": ") + body;
    return static_cast<uint>(shown.size());
}

} // namespace tw::test
