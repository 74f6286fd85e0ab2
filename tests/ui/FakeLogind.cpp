#include "tests/ui/FakeLogind.h"

#include <QDBusMessage>
#include <QVariantMap>

#include <algorithm>
#include <array>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tw::test {

namespace {

auto const managerPath = QStringLiteral("/org/freedesktop/login1");
auto const managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
auto const ourSession = QStringLiteral("/org/freedesktop/login1/session/_31");
auto const anotherSession = QStringLiteral("/org/freedesktop/login1/session/_32");

} // namespace

FakeLogind::FakeLogind(QDBusConnection connection, QString session)
    : bus(std::move(connection)), known(std::move(session))
{
    bus.registerObject(managerPath, this, QDBusConnection::ExportAllSlots);
    bus.registerService(QStringLiteral("org.freedesktop.login1"));
}

QDBusObjectPath FakeLogind::GetSession(QString const &id)
{
    ++asked;
    return QDBusObjectPath(id == known ? ourSession : anotherSession);
}

QDBusUnixFileDescriptor FakeLogind::Inhibit(QString const &what, QString const & /*who*/, QString const & /*why*/,
                                            QString const &mode)
{
    inhibited << what + QLatin1Char(' ') + mode;
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    QDBusUnixFileDescriptor watchedEnd;
    watchedEnd.giveFileDescriptor(ends[0]);
    watched.push_back(watchedEnd);
    QDBusUnixFileDescriptor given;
    given.giveFileDescriptor(ends[1]);
    return given;
}

int FakeLogind::heldLocks() const
{
    return static_cast<int>(std::ranges::count_if(watched, [](QDBusUnixFileDescriptor const &end) {
        pollfd state{.fd = end.fileDescriptor(), .events = 0, .revents = 0};
        return ::poll(&state, 1, 0) == 0; // otherwise nobody has the other end any more
    }));
}

void FakeLogind::prepareForSleep(bool begins)
{
    send(QStringLiteral("PrepareForSleep"), begins);
}

void FakeLogind::prepareForShutdown(bool begins)
{
    send(QStringLiteral("PrepareForShutdown"), begins);
}

void FakeLogind::send(QString const &name, bool begins)
{
    auto signal = QDBusMessage::createSignal(managerPath, managerInterface, name);
    signal << begins;
    bus.send(signal);
}

void FakeLogind::changeSession(QString const &property, QVariant const &value)
{
    sendChange(ourSession, property, value);
}

void FakeLogind::changeAnotherSession(QString const &property, QVariant const &value)
{
    sendChange(anotherSession, property, value);
}

void FakeLogind::sendChange(QString const &path, QString const &property, QVariant const &value)
{
    auto signal = QDBusMessage::createSignal(path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                             QStringLiteral("PropertiesChanged"));
    signal << QStringLiteral("org.freedesktop.login1.Session") << QVariantMap{{property, value}} << QStringList();
    bus.send(signal);
}

} // namespace tw::test
