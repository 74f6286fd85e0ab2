#include "Tarnwick/Toolkit/Appearance/ColorScheme.h"

#include "Tarnwick/Toolkit/Appearance/Palettes.h"

#include <QApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QFileInfo>
#include <QMetaType>
#include <QProxyStyle>
#include <QStyle>
#include <QTimer>

#include <utility>

namespace tw {

namespace {

auto const portalService = QStringLiteral("org.freedesktop.portal.Desktop");
auto const portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
auto const portalSettings = QStringLiteral("org.freedesktop.portal.Settings");
auto const appearanceGroup = QStringLiteral("org.freedesktop.appearance");
auto const schemeKey = QStringLiteral("color-scheme");

ColorScheme::Preference preferenceIn(QVariant value)
{
    // Portals wrap the number once or twice.
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    switch (value.toUInt()) {
    case 1:
        return ColorScheme::Preference::dark;
    case 2:
        return ColorScheme::Preference::light;
    default:
        return ColorScheme::Preference::none; // what a later version of the portal may add, too
    }
}

bool desktopBringsItsStyle()
{
    auto const *style = QApplication::style();
    if (auto const *const around = qobject_cast<QProxyStyle const *>(style))
        style = around->baseStyle();
    return style->name().compare(QLatin1String("fusion"), Qt::CaseInsensitive) != 0;
}

QPalette paletteFor(ColorScheme::Preference preference)
{
    if (desktopBringsItsStyle())
        return {};
    switch (preference) {
    case ColorScheme::Preference::dark:
        return Palettes::dark();
    case ColorScheme::Preference::light:
        return Palettes::light();
    case ColorScheme::Preference::none:
        break;
    }
    return {}; // no role is set in it, so all come from the platform
}

} // namespace

ColorScheme::ColorScheme(QDBusConnection const &connection, std::chrono::milliseconds forAnswer)
    : bus(connection), patience(forAnswer)
{
}

QDBusConnection ColorScheme::sessionBus()
{
    auto const runtimeDir = qEnvironmentVariable("XDG_RUNTIME_DIR");
    auto const hasUserBus = !runtimeDir.isEmpty() && QFileInfo::exists(runtimeDir + QStringLiteral("/bus"));
    // Without an address the library would try to start a bus, which takes seconds where there is no desktop.
    if (hasUserBus || qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS"))
        return QDBusConnection::sessionBus();
    return QDBusConnection(QString());
}

void ColorScheme::start(std::function<void()> known)
{
    onKnown = std::move(known);
    if (bus.isConnected())
        ask();
    QTimer::singleShot(bus.isConnected() ? patience : std::chrono::milliseconds::zero(), this,
                       [this] { becomeKnown(); });
}

void ColorScheme::ask()
{
    // A slot is matched by the names of its types, and this one is known by its name only once it has been asked for.
    qRegisterMetaType<QDBusVariant>();
    bus.connect(portalService, portalPath, portalSettings, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto question = QDBusMessage::createMethodCall(portalService, portalPath, portalSettings, QStringLiteral("Read"));
    question << appearanceGroup << schemeKey;
    auto *const call = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &ColorScheme::answered);
}

void ColorScheme::answered(QDBusPendingCallWatcher *call)
{
    call->deleteLater();
    auto const reply = call->reply();
    if (reply.type() == QDBusMessage::ReplyMessage && !hasHeardChange)
        apply(reply.arguments().value(0));
    becomeKnown();
}

void ColorScheme::settingChanged(QString const &group, QString const &key, QDBusVariant const &value)
{
    if (group != appearanceGroup || key != schemeKey)
        return;
    hasHeardChange = true;
    apply(QVariant::fromValue(value));
}

void ColorScheme::apply(QVariant const &value)
{
    current = preferenceIn(value);
    QApplication::setPalette(paletteFor(current));
}

void ColorScheme::becomeKnown()
{
    if (auto const known = std::exchange(onKnown, nullptr))
        known();
}

} // namespace tw
