#include "tests/ui/PrivateBus.h"

#include <csignal>
#include <stdexcept>

#include <sys/prctl.h>

namespace tw::test {

namespace {

constexpr auto configuration = R"(<busconfig>
  <type>session</type>
  <listen>unix:dir=%FOLDER%</listen>
  <policy context="default">
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

} // namespace

PrivateBus::PrivateBus()
{
    auto text = QString::fromLatin1(configuration);
    text.replace(QStringLiteral("%FOLDER%"), QString::fromStdString(folder.path()));
    auto const file = QString::fromStdString(folder.file("bus.conf", text.toStdString()));
    // A test that crashes takes its bus along.
    daemon.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    daemon.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--config-file=") + file, QStringLiteral("--nofork"),
                                                 QStringLiteral("--print-address")});
    if (!daemon.waitForStarted() || !daemon.waitForReadyRead())
        throw std::runtime_error("dbus-daemon does not start: " + daemon.errorString().toStdString());
    address = QString::fromUtf8(daemon.readLine()).trimmed();
}

PrivateBus::~PrivateBus()
{
    for (auto const &name : connections)
        QDBusConnection::disconnectFromBus(name);
    daemon.kill();
    daemon.waitForFinished();
}

QDBusConnection PrivateBus::connect()
{
    static int made = 0; // connections are known by their names in the whole process
    connections << QStringLiteral("private bus %1").arg(++made);
    auto connection = QDBusConnection::connectToBus(address, connections.last());
    if (!connection.isConnected())
        throw std::runtime_error("cannot connect to the private bus");
    return connection;
}

} // namespace tw::test
