#pragma once

#include "tests/support/TemporaryFolder.h"

#include <QDBusConnection>
#include <QProcess>

namespace tw::test {

/// A message bus of the test's own, on which nothing is started by being called.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();

    /// A new connection to it. Closed with the bus.
    QDBusConnection connect();

private:
    TemporaryFolder folder;
    QProcess daemon;
    QString address;
    QStringList connections;
};

} // namespace tw::test
