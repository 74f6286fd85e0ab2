#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>

#include <vector>

namespace tw::test {

/// A stand-in for the desktop's portal, with the one setting that is asked for.
class FakePortal final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    /// When a question is answered.
    enum class Answers { atOnce, whenTold };

    FakePortal(QDBusConnection connection, Answers answers);

    /// What is answered from now on.
    void setScheme(uint value) { scheme = value; }

    /// Answers everything that was asked so far.
    void answerNow();

    /// The user has changed the setting in the desktop.
    void change(uint value);

    /// Other settings that look alike have changed.
    void changeSomethingElse(uint value);

    std::size_t questions() const noexcept { return asked; }

public Q_SLOTS:
    QDBusVariant Read(QString const &group, QString const &key);

private:
    // Sent by hand: an exported signal would make types known to the process that the program has to make known.
    void sendChange(QString const &group, QString const &key, uint value);

    QDBusConnection bus;
    Answers const manner;
    uint scheme = 0;
    std::size_t asked = 0;
    std::vector<QDBusMessage> waiting;
};

} // namespace tw::test
