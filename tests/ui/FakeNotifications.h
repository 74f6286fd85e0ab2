#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace tw::test {

/// A stand-in for the desktop's notifications.
class FakeNotifications final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    explicit FakeNotifications(QDBusConnection connection);

    /// What was shown, as "summary: body".
    QStringList shown;

public Q_SLOTS:

    uint Notify(QString const &program, uint replaces, QString const &icon, QString const &summary, QString const &body,
                QStringList const &actions, QVariantMap const &hints, int time);

private:
    QDBusConnection bus;
};

} // namespace tw::test
