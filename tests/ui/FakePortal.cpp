#include "tests/ui/FakePortal.h"

#include <QDBusError>

namespace tw::test {

namespace {

auto const objectPath = QStringLiteral("/org/freedesktop/portal/desktop");
auto const settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
auto const appearance = QStringLiteral("org.freedesktop.appearance");
auto const colorScheme = QStringLiteral("color-scheme");

/// As the portal does it: the number in a variant, in the variant that every reading is.
QDBusVariant wrapped(uint value)
{
    return QDBusVariant(QVariant::fromValue(QDBusVariant(value)));
}

} // namespace

FakePortal::FakePortal(QDBusConnection connection, Answers answers) : bus(std::move(connection)), manner(answers)
{
    bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots);
    bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
}

QDBusVariant FakePortal::Read(QString const &group, QString const &key)
{
    ++asked;
    if (group != appearance || key != colorScheme) {
        sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"), QStringLiteral("no such setting"));
        return {};
    }
    if (manner == Answers::whenTold) {
        setDelayedReply(true);
        waiting.push_back(message());
        return {};
    }
    return wrapped(scheme);
}

void FakePortal::answerNow()
{
    for (auto const &question : std::exchange(waiting, {}))
        bus.send(question.createReply(QVariant::fromValue(wrapped(scheme))));
}

void FakePortal::change(uint value)
{
    scheme = value;
    sendChange(appearance, colorScheme, value);
}

void FakePortal::changeSomethingElse(uint value)
{
    sendChange(appearance, QStringLiteral("accent-color"), value);
    sendChange(QStringLiteral("org.gnome.desktop.interface"), colorScheme, value);
}

void FakePortal::sendChange(QString const &group, QString const &key, uint value)
{
    auto signal = QDBusMessage::createSignal(objectPath, settingsInterface, QStringLiteral("SettingChanged"));
    signal << group << key << QVariant::fromValue(QDBusVariant(value));
    bus.send(signal);
}

} // namespace tw::test
