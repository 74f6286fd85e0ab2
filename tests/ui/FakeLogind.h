#pragma once

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QStringList>

#include <vector>

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

    /// What has been asked for, as "what mode".
    QStringList const &locks() const noexcept { return inhibited; }

    /// Of all locks that were given, those that are still held.
    int heldLocks() const;

public Q_SLOTS:
    QDBusObjectPath GetSession(QString const &id);
    QDBusUnixFileDescriptor Inhibit(QString const &what, QString const &who, QString const &why, QString const &mode);

private:
    void send(QString const &name, bool begins);
    void sendChange(QString const &path, QString const &property, QVariant const &value);

    QDBusConnection bus;
    QString const known;
    std::size_t asked = 0;
    QStringList inhibited;
    std::vector<QDBusUnixFileDescriptor> watched; ///< the ends of pipes whose other ends were given away
};

} // namespace tw::test
