#pragma once

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>

namespace tw::test {

/// A stand-in for logind with one session.
class FakeLogind final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    /// `session` is the one that can be asked for.
    FakeLogind(QDBusConnection connection, QString session);

    void prepareForSleep(bool begins);
    void prepareForShutdown(bool begins);

    /// Something about the session has changed.
    void changeSession(QString const &property, QVariant const &value);

    /// The same about another session.
    void changeAnotherSession(QString const &property, QVariant const &value);

    std::size_t questions() const noexcept { return asked; }

public Q_SLOTS:
    QDBusObjectPath GetSession(QString const &id);

private:
    void send(QString const &name, bool begins);
    void sendChange(QString const &path, QString const &property, QVariant const &value);

    QDBusConnection bus;
    QString const known;
    std::size_t asked = 0;
};

} // namespace tw::test
