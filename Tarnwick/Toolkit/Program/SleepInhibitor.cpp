#include "Tarnwick/Toolkit/Program/SleepInhibitor.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <utility>

namespace tw {

void SleepInhibitor::hold(QString const &why)
{
    if (std::exchange(isWanted, true) || !bus.isConnected())
        return;
    // See org.freedesktop.login1(5).
    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
    question << QStringLiteral("sleep") << QStringLiteral("Tarnwick") << why << QStringLiteral("block");
    auto *const call = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &SleepInhibitor::answered);
}

void SleepInhibitor::release()
{
    isWanted = false;
    lock = {};
}

void SleepInhibitor::answered(QDBusPendingCallWatcher *call)
{
    call->deleteLater();
    auto const reply = call->reply();
    // The work may have ended since. A lock that is not kept is closed with the reply.
    if (isWanted && reply.type() == QDBusMessage::ReplyMessage)
        lock = qvariant_cast<QDBusUnixFileDescriptor>(reply.arguments().value(0));
}

} // namespace tw
