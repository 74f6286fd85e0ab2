#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>

class QDBusPendingCallWatcher;

namespace tw {

/// Keeps the machine from going to sleep, by a lock of logind. Where there is no logind, nothing happens.
///
/// Threads: main context only; nothing here waits for the bus.
/// Lifetime: the machine may sleep again when this goes.
class SleepInhibitor final : public QObject {
    Q_OBJECT

public:
    explicit SleepInhibitor(QDBusConnection bus) : bus(std::move(bus)) {}

    /// From now on; `why` is what logind says if somebody asks.
    void hold(QString const &why);

    void release();

private:
    void answered(QDBusPendingCallWatcher *call);

    QDBusConnection bus;
    bool isWanted = false;
    QDBusUnixFileDescriptor lock; ///< logind counts it as long as it is open
};

} // namespace tw
