#include "Tarnwick/Toolkit/Program/FileManagerService.h"

#include "tests/ui/PrivateBus.h"
#include "tests/ui/QtLoop.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

class FileManagerServiceTest : public testing::Test {
protected:
    bool isNameTaken() const
    {
        return caller.interface()->isServiceRegistered(QStringLiteral("org.freedesktop.FileManager1")).value();
    }

    void call(char const *method, QString const &address)
    {
        auto message = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
            QStringLiteral("org.freedesktop.FileManager1"), QString::fromLatin1(method));
        message << QStringList{address} << QStringLiteral("token");
        caller.asyncCall(message);
    }

    PrivateBus bus;
    QDBusConnection caller = bus.connect();
    std::vector<OpenRequest> asked;
    FileManagerService service{bus.connect(), [this](OpenRequest const &request) { asked.push_back(request); }};
};

TEST_F(FileManagerServiceTest, theNameIsTakenOnlyWhileTheUserHasChosenTheProgram)
{
    EXPECT_FALSE(isNameTaken());
    service.setChosen(true);
    processUntil([&] { return isNameTaken(); });
    service.setChosen(false);
    processUntil([&] { return !isNameTaken(); });
}

TEST_F(FileManagerServiceTest, anItemIsShownInItsFolderUnderTheCursor)
{
    service.setChosen(true);
    processUntil([&] { return isNameTaken(); });
    call("ShowItems", QStringLiteral("file:///srv/a%20b"));
    processUntil([&] { return asked.size() == 1; });
    ASSERT_EQ(asked[0].places.size(), 1U);
    EXPECT_EQ(asked[0].places[0].place.path, "/srv");
    EXPECT_EQ(asked[0].places[0].place.cursor, "a b");
    EXPECT_EQ(asked[0].activationToken, "token");
    call("ShowFolders", QStringLiteral("file:///srv"));
    processUntil([&] { return asked.size() == 2; });
    EXPECT_EQ(asked[1].places[0].place.path, "/srv");
    call("ShowItemProperties", QStringLiteral("file:///srv/c"));
    processUntil([&] { return asked.size() == 3; });
    EXPECT_EQ(asked[2].places[0].place.cursor, "c");
}

} // namespace
} // namespace tw::test
