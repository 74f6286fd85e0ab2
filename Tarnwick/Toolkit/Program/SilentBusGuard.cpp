#include "Tarnwick/Toolkit/Program/SilentBusGuard.h"

#include "TWEngine/Passwords/SessionBus.h"

#include <QDBusConnection>

namespace tw {

namespace {

constexpr auto addressVariable = "DBUS_SESSION_BUS_ADDRESS";

/// A bus greets within a millisecond or two; while a login keeps the machine busy, within a hundred times that.
constexpr std::chrono::milliseconds patience{500};

bool doesBusAnswer()
{
    // Another kind of address, such as one that says that there is no bus, is the toolkit's own business.
    if (auto const address = qgetenv(addressVariable); !address.isEmpty() && !address.startsWith("unix:"))
        return true;
    return SessionBus::answers(patience);
}

} // namespace

SilentBusGuard::SilentBusGuard() : isHidden(!doesBusAnswer())
{
    if (!isHidden)
        return;
    if (qEnvironmentVariableIsSet(addressVariable))
        address = qgetenv(addressVariable);
    qputenv(addressVariable, "disabled:");
}

SilentBusGuard::~SilentBusGuard()
{
    if (!isHidden)
        return;
    QDBusConnection::sessionBus(); // fails, and is remembered as it is
    if (address)
        qputenv(addressVariable, *address);
    else
        qunsetenv(addressVariable);
}

} // namespace tw
