// The tests of the views: real widgets, painted off screen.

#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    // Also if a person starts the program by hand: no window is to appear on the screen.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Not the user's session: a test that needs a bus starts its own.
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    QTemporaryDir const runtime;
    qputenv("XDG_RUNTIME_DIR", runtime.path().toLocal8Bit());
    qputenv("NO_AT_BRIDGE", "1");

    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("fusion"));
    return RUN_ALL_TESTS();
}
