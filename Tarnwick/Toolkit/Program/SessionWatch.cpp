#include "Tarnwick/Toolkit/Program/SessionWatch.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>

namespace tw {

namespace {

// See org.freedesktop.login1(5).
auto const service = QStringLiteral("org.freedesktop.login1");
auto const managerPath = QStringLiteral("/org/freedesktop/login1");
auto const managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
auto const sessionInterface = QStringLiteral("org.freedesktop.login1.Session");

} // namespace

SessionWatch::SessionWatch(QDBusConnection const &connection, QString const &session,
                           std::function<void(SessionEvent)> happened)
    : bus(connection), onEvent(std::move(happened))
{
    if (!bus.isConnected())
        return;
    bus.connect(service, managerPath, managerInterface, QStringLiteral("PrepareForSleep"), this,
                SLOT(prepareForSleep(bool)));
    bus.connect(service, managerPath, managerInterface, QStringLiteral("PrepareForShutdown"), this,
                SLOT(prepareForShutdown(bool)));
    askForSession(session);
}

QDBusConnection SessionWatch::systemBus()
{
    // Where no bus is to be expected the library is not asked, which would complain.
    if (qEnvironmentVariableIsSet("DBUS_SYSTEM_BUS_ADDRESS") ||
        QFileInfo::exists(QStringLiteral("/run/dbus/system_bus_socket")))
        return QDBusConnection::systemBus();
    return QDBusConnection(QString());
}

QString SessionWatch::sessionOfThisProcess()
{
    auto const named = qEnvironmentVariable("XDG_SESSION_ID");
    return named.isEmpty() ? QStringLiteral("auto") : named;
}

void SessionWatch::askForSession(QString const &session)
{
    auto question =
        QDBusMessage::createMethodCall(service, managerPath, managerInterface, QStringLiteral("GetSession"));
    question << session;
    auto *const call = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &SessionWatch::answered);
}

void SessionWatch::answered(QDBusPendingCallWatcher *call)
{
    call->deleteLater();
    auto const reply = call->reply();
    if (reply.type() != QDBusMessage::ReplyMessage)
        return;
    auto const path = qvariant_cast<QDBusObjectPath>(reply.arguments().value(0)).path();
    if (path.isEmpty())
        return;
    bus.connect(service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"),
                this, SLOT(sessionChanged(QString, QVariantMap, QStringList)));
}

void SessionWatch::prepareForSleep(bool begins)
{
    onEvent(begins ? SessionEvent::sleep : SessionEvent::wake);
}

void SessionWatch::prepareForShutdown(bool begins)
{
    // It is taken back when somebody stops the shutdown.
    if (begins)
        onEvent(SessionEvent::powerOff);
}

void SessionWatch::sessionChanged(QString const &interface, QVariantMap const &changed,
                                  QStringList const & /*invalidated*/)
{
    auto const active = changed.constFind(QStringLiteral("Active"));
    if (interface == sessionInterface && active != changed.constEnd())
        onEvent(active->toBool() ? SessionEvent::back : SessionEvent::handedOver);
}

} // namespace tw
