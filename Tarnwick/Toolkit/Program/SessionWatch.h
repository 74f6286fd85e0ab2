#pragma once

#include "Tarnwick/Lifecycle/LifeLog.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <functional>

class QDBusPendingCallWatcher;

namespace tw {

/// Hears from logind that the machine goes to sleep, wakes up or is switched off, and that another user's session comes
/// to the front or ours comes back. Where there is no logind, nothing is ever heard.
///
/// Nothing here waits for the bus.
class SessionWatch final : public QObject {
    Q_OBJECT

public:
    /// `session` is what logind calls our session; "auto" lets it find out.
    SessionWatch(QDBusConnection const &bus, QString const &session, std::function<void(SessionEvent)> happened);

    /// The machine's bus, if there is one to connect to; otherwise a connection that is not connected.
    static QDBusConnection systemBus();

    /// The session that this process belongs to.
    static QString sessionOfThisProcess();

private Q_SLOTS:
    void prepareForSleep(bool begins);
    void prepareForShutdown(bool begins);
    void sessionChanged(QString const &interface, QVariantMap const &changed, QStringList const &invalidated);

private:
    void askForSession(QString const &session);
    void answered(QDBusPendingCallWatcher *call);

    QDBusConnection bus;
    std::function<void(SessionEvent)> const onEvent;
};

} // namespace tw
