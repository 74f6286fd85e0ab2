#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

#include <chrono>
#include <functional>

class QDBusPendingCallWatcher;

namespace tw {

/// Dark or light, as the desktop wants it, from the start on and when it changes.
///
/// The desktop's portal is asked on the bus, without waiting. Its answer decides as long as the desktop brings no style
/// of its own, which comes with its own colours; without an answer everything stays as the platform gives it.
class ColorScheme final : public QObject {
    Q_OBJECT

public:
    /// What the user prefers; the values are the portal's.
    enum class Preference { none = 0, dark = 1, light = 2 };

    /// How long the first window waits for the portal. A running one answers within a few milliseconds; one that must
    /// be started first takes longer than anybody should look at nothing.
    static constexpr std::chrono::milliseconds usualPatience{50};

    explicit ColorScheme(QDBusConnection const &bus, std::chrono::milliseconds patience = usualPatience);

    /// Asks the portal and listens to it from now on. Calls `known` once: when the first answer has been applied, or
    /// soon after if there is none, so that a window that is shown then does not change its colours under the eye.
    void start(std::function<void()> known);

    Preference preference() const noexcept { return current; }

    /// The session's bus, if there is one to connect to; otherwise a connection that is not connected.
    static QDBusConnection sessionBus();

private Q_SLOTS:
    void settingChanged(QString const &group, QString const &key, QDBusVariant const &value);

private:
    void ask();
    void answered(QDBusPendingCallWatcher *call);
    void apply(QVariant const &value);
    void becomeKnown();

    QDBusConnection bus;
    std::chrono::milliseconds const patience;
    std::function<void()> onKnown;
    Preference current = Preference::none;
    bool hasHeardChange = false; ///< newer than an answer that is still on its way
};

} // namespace tw
