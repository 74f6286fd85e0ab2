#include "Tarnwick/Toolkit/Windows/ConnectionButton.h"

#include "Tarnwick/Toolkit/Widgets/PathField.h"
#include "Tarnwick/Toolkit/Widgets/TypeAheadMenu.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/ScopedVariable.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QTest>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ConnectionButtonTest : public WindowTest {
protected:
    ConnectionButton &button(PaneSide side) { return window->pane(side).connectionButton(); }

    TypeAheadMenu &menu(PaneSide side = PaneSide::left) { return button(side).menu(); }

    void save(std::string const &config) { ssh.file("config", config); }

    std::vector<std::string> titles(PaneSide side = PaneSide::left)
    {
        std::vector<std::string> all;
        for (auto const *const each : menu(side).actions())
            all.push_back(each->isSeparator() ? "-" : each->text().toStdString());
        return all;
    }

    /// Goes on when the menu is open and lists the saved hosts as they are now.
    void waitForMenu(std::vector<std::string> const &wanted, PaneSide side = PaneSide::left)
    {
        processUntil([&] { return menu(side).isVisible() && titles(side) == wanted; });
    }

    void openByKey(std::vector<std::string> const &wanted)
    {
        press(Qt::Key_K, Qt::ControlModifier);
        waitForMenu(wanted);
    }

    void type(std::string const &letters)
    {
        QTest::keyClicks(&menu(), QString::fromStdString(letters));
        processPosted();
    }

    void pressInMenu(Qt::Key key)
    {
        QTest::keyClick(&menu(), key);
        processPosted();
    }

    std::string activeTitle() { return menu().activeAction() ? menu().activeAction()->text().toStdString() : ""; }

    QAction &choice(std::string const &title, PaneSide side = PaneSide::left)
    {
        for (auto *const each : menu(side).actions()) {
            if (each->text().toStdString() == title)
                return *each;
        }
        throw std::runtime_error(title + " is not in the menu");
    }
};

TEST_F(ConnectionButtonTest, saysWhatThePaneIsConnectedTo)
{
    open();
    EXPECT_EQ(button(PaneSide::left).text(), QStringLiteral("This Computer"));
    EXPECT_EQ(button(PaneSide::left).accessibleName(), QStringLiteral("Connection: This Computer"));
}

TEST_F(ConnectionButtonTest, standsInOneLineWithThePath)
{
    open();
    auto const &one = button(PaneSide::left);
    auto const &path = window->pane(PaneSide::left).pathField();
    EXPECT_EQ(one.height(), path.height());
    EXPECT_EQ(one.y(), path.y());
    EXPECT_EQ(one.geometry().right() + 1, path.x());
}

TEST_F(ConnectionButtonTest, aPressOpensTheMenuOfItsPaneWhichBecomesTheActiveOne)
{
    save("Host web\nHost mail\n");
    open();
    QTest::mouseClick(&button(PaneSide::right), Qt::LeftButton);
    waitForMenu({"This Computer", "-", "web", "mail"}, PaneSide::right);
    EXPECT_FALSE(menu(PaneSide::left).isVisible());
    EXPECT_EQ(controller->activeSide(), PaneSide::right);
    EXPECT_TRUE(choice("This Computer", PaneSide::right).isChecked());
    EXPECT_FALSE(choice("web", PaneSide::right).isChecked());
}

TEST_F(ConnectionButtonTest, theKeyOpensTheMenuOfTheActivePaneUnderItsButton)
{
    save("Host web\n");
    open();
    openByKey({"This Computer", "-", "web"});
    auto const &one = button(PaneSide::left);
    EXPECT_EQ(menu().geometry().topLeft(), one.mapToGlobal(QPoint(0, one.height() + 2)));
}

TEST_F(ConnectionButtonTest, theMenuDoesNotOpenInsideTheEventThatAsksForIt)
{
    open();
    controller->cmdConnect();
    EXPECT_FALSE(menu().isVisible());
    processUntil([this] { return menu().isVisible(); });
}

TEST_F(ConnectionButtonTest, escapeClosesTheMenuAndTheTableHasTheKeyboard)
{
    open();
    openByKey({"This Computer", "-", "No hosts in ~/.ssh/config"});
    pressInMenu(Qt::Key_Escape);
    EXPECT_FALSE(menu().isVisible());
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    EXPECT_EQ(active().pathOnShow(), left.path());
}

TEST_F(ConnectionButtonTest, fromThePathFieldTheKeyboardComesBackToTheTableToo)
{
    open();
    window->pane(PaneSide::left).pathField().startEditing();
    QTest::mouseClick(&button(PaneSide::left), Qt::LeftButton);
    processUntil([this] { return menu().isVisible(); });
    pressInMenu(Qt::Key_Escape);
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
}

TEST_F(ConnectionButtonTest, aSecondPressClosesTheMenuAndLeavesItClosed)
{
    open();
    QTest::mouseClick(&button(PaneSide::left), Qt::LeftButton);
    processUntil([this] { return menu().isVisible(); });
    auto const onMenu = menu().mapFromGlobal(button(PaneSide::left).mapToGlobal(QPoint(5, 5)));
    QTest::mouseClick(menu().windowHandle(), Qt::LeftButton, Qt::NoModifier, onMenu);
    processPosted();
    EXPECT_FALSE(menu().isVisible());
}

TEST_F(ConnectionButtonTest, theHostsAreThoseInTheFileWhenTheMenuOpens)
{
    save("Host web\n");
    open();
    openByKey({"This Computer", "-", "web"});
    pressInMenu(Qt::Key_Escape);
    save("Host mail\nHost web\n");
    openByKey({"This Computer", "-", "mail", "web"});
}

TEST_F(ConnectionButtonTest, whereTheUserWasInTheMenuStaysWhenItIsCompleted)
{
    save("Host beta\n");
    open();
    openByKey({"This Computer", "-", "beta"});
    auto &one = button(PaneSide::left);
    pressInMenu(Qt::Key_Down);
    ASSERT_EQ(activeTitle(), "beta");
    one.updateMenu(connectionMenuItems({}, {{"alpha", "beta", "gamma"}}, "local"));
    EXPECT_TRUE(menu().isVisible());
    EXPECT_THAT(titles(), ElementsAre("This Computer", "-", "alpha", "beta", "gamma"));
    EXPECT_EQ(activeTitle(), "beta");
    processPosted();
    EXPECT_GE(menu().height(), menu().sizeHint().height()) << "nothing of it is cut off";
}

TEST_F(ConnectionButtonTest, aMenuThatWasClosedIsNotOpenedByLateHosts)
{
    open();
    openByKey({"This Computer", "-", "No hosts in ~/.ssh/config"});
    pressInMenu(Qt::Key_Escape);
    button(PaneSide::left).updateMenu(connectionMenuItems({}, {{"web"}}, "local"));
    processPosted();
    EXPECT_FALSE(menu().isVisible());
}

TEST_F(ConnectionButtonTest, thisComputerIsTheHomeFolderInThatPane)
{
    TemporaryFolder const home;
    ScopedVariable const variable("HOME", home.path());
    open();
    QTest::mouseClick(&button(PaneSide::right), Qt::LeftButton);
    processUntil([this] { return menu(PaneSide::right).isVisible(); });
    QTest::keyClick(&menu(PaneSide::right), Qt::Key_Return);
    waitForPath(PaneSide::right, home.path());
    EXPECT_EQ(pane(PaneSide::left).pathOnShow(), left.path());
    EXPECT_TRUE(table(PaneSide::right).hasFocus());
}

TEST_F(ConnectionButtonTest, aHostIsChosenWithTheKeyboardAndItsFailureTold)
{
    save("Host web\nHost mail\n");
    open();
    openByKey({"This Computer", "-", "web", "mail"});
    pressInMenu(Qt::Key_Down);
    pressInMenu(Qt::Key_Down);
    ASSERT_EQ(activeTitle(), "mail");
    QTest::keyClick(&menu(), Qt::Key_Return); // and no turn of the event loop, in which ssh may have ended
    EXPECT_EQ(button(PaneSide::left).text(), QStringLiteral("mail"));
    EXPECT_EQ(window->pane(PaneSide::left).pathField().text(), QStringLiteral("connecting…"));
    EXPECT_EQ(status(PaneSide::left), "");
    EXPECT_TRUE(table(PaneSide::left).hasFocus());
    processUntil([this] { return !notice(PaneSide::left).empty(); });
    EXPECT_THAT(notice(PaneSide::left), HasSubstr("mail"));
    EXPECT_EQ(button(PaneSide::left).text(), QStringLiteral("This Computer"));
    EXPECT_EQ(active().pathOnShow(), left.path());
}

TEST_F(ConnectionButtonTest, homeAndEndGoToTheFirstAndTheLastName)
{
    save("Host web\nHost mail\nHost local\n"); // the last is this machine's, and cannot be chosen
    open();
    openByKey({"This Computer", "-", "web", "mail", "local"});
    pressInMenu(Qt::Key_End);
    EXPECT_EQ(activeTitle(), "mail");
    pressInMenu(Qt::Key_Home);
    EXPECT_EQ(activeTitle(), "This Computer");
}

TEST_F(ConnectionButtonTest, typingTheBeginningOfANameGoesToIt)
{
    save("Host web\nHost mail\nHost mars\nHost Moon\n");
    open();
    openByKey({"This Computer", "-", "web", "mail", "mars", "Moon"});
    type("mar");
    EXPECT_EQ(activeTitle(), "mars");
    EXPECT_TRUE(menu().isVisible());
}

TEST_F(ConnectionButtonTest, oneLetterAgainAndAgainGoesThroughItsNames)
{
    save("Host web\nHost mail\nHost mars\nHost Moon\n");
    open();
    openByKey({"This Computer", "-", "web", "mail", "mars", "Moon"});
    for (auto const *name : {"mail", "mars", "Moon", "mail"}) {
        type("m");
        EXPECT_EQ(activeTitle(), name);
    }
}

TEST_F(ConnectionButtonTest, namesAreShownAsTheyAreAndHideNothing)
{
    save("Host a&b\nHost x\xE2\x80\xAEy\n");
    open();
    openByKey({"This Computer", "-", "a&&b", "x\xEF\xBF\xBDy"});
    pressInMenu(Qt::Key_Down);
    QTest::keyClick(&menu(), Qt::Key_Return);
    EXPECT_EQ(button(PaneSide::left).text(), QStringLiteral("a&b"));
}

TEST_F(ConnectionButtonTest, aVeryLongNameIsShortenedAndItsWholeIsTheToolTip)
{
    auto const name = "begin-" + std::string(500, 'x') + "-end";
    save("Host " + name + "\n");
    open();
    press(Qt::Key_K, Qt::ControlModifier);
    processUntil(
        [this] { return menu().isVisible() && menu().actions().size() == 3 && menu().actions()[2]->isEnabled(); });
    auto const &item = *menu().actions()[2];
    EXPECT_LT(item.text().size(), 120);
    EXPECT_TRUE(item.text().startsWith(QStringLiteral("begin-")));
    EXPECT_TRUE(item.text().endsWith(QStringLiteral("-end")));
    EXPECT_THAT(item.toolTip().toStdString(), HasSubstr(name));
    EXPECT_LT(menu().width(), 700);
}

TEST_F(ConnectionButtonTest, aNameTakesThePathNoMoreThanItsShare)
{
    open();
    window->resize(1180, 720); // room for a share in letters of any font
    processPosted();
    auto &one = button(PaneSide::left);
    auto const usual = one.width();
    one.showConnection("a");
    processPosted();
    EXPECT_EQ(one.width(), usual) << "the path would jump for nothing";
    one.showConnection(std::string(300, 'x'));
    processPosted();
    EXPECT_GT(one.width(), usual);
    EXPECT_LT(one.width(), window->pane(PaneSide::left).width() / 2);
    window->resize(window->minimumSize());
    processPosted();
    EXPECT_GE(window->pane(PaneSide::left).pathField().width(), 100);
}

TEST_F(ConnectionButtonTest, aNameOfUsualLengthIsShownInFull)
{
    open();
    auto &one = button(PaneSide::left);
    std::string name;
    for (char letter = 'a'; letter < 'q'; ++letter) {
        name += letter;
        one.showConnection(name);
        processPosted();
        EXPECT_EQ(one.shownTitle(), QString::fromStdString(name)) << "fractions of a pixel must not shorten it";
    }
}

TEST_F(ConnectionButtonTest, aThousandHostsScroll)
{
    std::string config;
    for (int number = 0; number < 1000; ++number)
        config += "Host host" + std::to_string(number) + "\n";
    save(config);
    open();
    press(Qt::Key_K, Qt::ControlModifier);
    processUntil([this] { return menu().isVisible() && menu().actions().size() == 1004; }); // with the filter's line
    processPosted();
    EXPECT_LE(menu().height(), window->screen()->geometry().height());
    pressInMenu(Qt::Key_End);
    EXPECT_EQ(activeTitle(), "host999");
    EXPECT_TRUE(menu().rect().contains(menu().actionGeometry(menu().activeAction()))) << "it is scrolled into view";
}

class ManyHostsTest : public ConnectionButtonTest {
protected:
    ManyHostsTest()
    {
        std::string config;
        for (int number = 10; number < 40; ++number)
            config += "Host host" + std::to_string(number) + "\n";
        save(config);
    }

    void openMany()
    {
        open();
        press(Qt::Key_K, Qt::ControlModifier);
        processUntil([this] { return menu().isVisible() && menu().actions().size() == 34; });
    }
};

TEST_F(ManyHostsTest, lettersLeaveTheHostsThatHaveThem)
{
    openMany();
    EXPECT_EQ(titles().front(), "Type to find a host");
    type("t23");
    EXPECT_THAT(titles(), ElementsAre("t23|", "-", "host23"));
    EXPECT_EQ(activeTitle(), "host23");
    EXPECT_TRUE(menu().isVisible());
}

TEST_F(ManyHostsTest, theHostThatIsLeftIsChosenWithReturn)
{
    openMany();
    type("23");
    QTest::keyClick(&menu(), Qt::Key_Return);
    EXPECT_EQ(button(PaneSide::left).text(), QStringLiteral("host23"));
}

TEST_F(ManyHostsTest, backspaceTakesALetterAwayAndEscapeAllOfThem)
{
    openMany();
    type("23");
    pressInMenu(Qt::Key_Backspace);
    EXPECT_EQ(titles().front(), "2|");
    EXPECT_EQ(titles().size(), 2U + 12U) << "those with a 2 anywhere";
    pressInMenu(Qt::Key_Escape);
    EXPECT_EQ(titles().front(), "Type to find a host");
    pressInMenu(Qt::Key_Escape);
    EXPECT_FALSE(menu().isVisible());
}

TEST_F(ManyHostsTest, theFilterIsEmptyWhenTheMenuOpensAgain)
{
    openMany();
    type("23");
    pressInMenu(Qt::Key_Escape);
    pressInMenu(Qt::Key_Escape);
    press(Qt::Key_K, Qt::ControlModifier);
    processUntil([this] { return menu().isVisible(); });
    EXPECT_EQ(titles().front(), "Type to find a host");
}

TEST_F(ManyHostsTest, theHostThatWasChosenLastStandsFirst)
{
    openMany();
    type("23");
    QTest::keyClick(&menu(), Qt::Key_Return);
    processUntil([this] { return !notice(PaneSide::left).empty(); });
    press(Qt::Key_K, Qt::ControlModifier);
    processUntil([this] { return menu().isVisible(); });
    EXPECT_EQ(titles().at(4), "host23");
    EXPECT_EQ(titles().at(5), "host10");
}

} // namespace
} // namespace tw::test
