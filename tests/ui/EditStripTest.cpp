#include "Tarnwick/Toolkit/Editing/EditStrip.h"

#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Toolkit/Dialogs/SheetText.h"
#include "Tarnwick/Toolkit/Editing/EditLine.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <fstream>

namespace tw::test {
namespace {

Task<std::shared_ptr<Browser>> nobody()
{
    throw std::runtime_error("no way there");
    co_return nullptr;
}

/// Files of hosts that cannot be reached.
std::shared_ptr<EditSessions> sessionsIn(std::string const &base, EngineRuntime &engine,
                                         QtMainContext const &mainContext)
{
    return std::make_shared<EditSessions>(
        RemoteEditSession::Ports{.engine = engine,
                                 .mainContext = mainContext.context(),
                                 .clock = std::make_shared<ManualClock>(),
                                 .host = [](std::string const & /*connection*/) { return nobody(); }},
        EditStaging::Place{.base = base});
}

EditSessions::Session editCopy(EditSessions &edits, std::string const &base, EditStaging::Record const &record)
{
    auto copy = EditStaging::make(record, {.base = base});
    copy.record.uploaded = EditStaging::stampOf(copy.path);
    return edits.add({.copy = std::move(copy), .way = EditCommand::Way::copy});
}

/// The tasks of the sessions are stopped, and end when the context comes to them.
void endSessions(EditSessions &edits, EngineRuntime &engine, QtMainContext const &mainContext)
{
    edits.leaveForNextStart();
    do {
        engine.waitUntilIdle();
    } while (mainContext.context()->runPending() > 0);
}

class EditStripTest : public ::testing::Test {
protected:
    EditStripTest()
    {
        auto *const column = new QVBoxLayout(&window);
        column->addWidget(&strip);
        window.show();
    }

    ~EditStripTest() override { endSessions(*edits, engine, mainContext); }

    EditSessions::Session edit(std::string const &path, std::string const &host = "web")
    {
        return editCopy(*edits, folder.path("edits"), {.connection = host, .path = path});
    }

    QStringList titles(std::size_t line) const
    {
        QStringList all;
        for (auto const *button : strip.shownLines()[line]->buttons()) {
            if (!button->isHidden())
                all += button->text();
        }
        return all;
    }

    void click(std::size_t button) { strip.shownLines().front()->buttons().at(button)->click(); }

    TemporaryFolder folder;
    EngineRuntime engine;
    QtMainContext mainContext;
    std::shared_ptr<EditSessions> edits = sessionsIn(folder.path("edits"), engine, mainContext);
    QWidget window;
    EditStrip strip{edits, EditStrip::Place::mainWindow, &window};
};

TEST_F(EditStripTest, eachFileHasALineAsLongAsItIsEdited)
{
    EXPECT_TRUE(strip.isHidden());
    edit("/srv/a");
    auto const second = edit("/srv/b");
    ASSERT_EQ(strip.shownLines().size(), 2U);
    EXPECT_FALSE(strip.isHidden());
    EXPECT_EQ(strip.shownLines()[0]->accessibleName(), QStringLiteral("web:/srv/a"));
    EXPECT_EQ(strip.shownLines()[0]->statusLine().text(), QStringLiteral("watching for saves…"));
    click(1);
    processUntil([&] { return strip.shownLines().size() == 1; });
    EXPECT_EQ(strip.shownLines()[0]->session(), second);
    click(1);
    processUntil([&] { return strip.isHidden(); });
}

TEST_F(EditStripTest, aWindowNamesItsHostsAndStaysInFront)
{
    EditStrip own(edits, EditStrip::Place::ownWindow, &window);
    EXPECT_TRUE(own.isWindow());
    EXPECT_TRUE(own.windowFlags().testFlags(Qt::Tool | Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(own.testAttribute(Qt::WA_ShowWithoutActivating)) << "the editor keeps the keyboard";
    auto const name = [&] { return own.shownLines()[0]->accessibleName(); };
    edit("/srv/a");
    EXPECT_EQ(own.windowTitle(), QStringLiteral("Editing on web"));
    EXPECT_EQ(name(), QStringLiteral("/srv/a"));
    edit("/srv/a", "mail");
    EXPECT_EQ(own.windowTitle(), QStringLiteral("Editing on mail, web"));
    EXPECT_EQ(name(), QStringLiteral("web:/srv/a")) << "both have this path";
}

TEST_F(EditStripTest, aLongPathLosesItsMiddle)
{
    edit("/srv/" + std::string(300, 'x') + "/name.txt");
    auto const path = strip.shownLines()[0]->findChild<QLabel *>()->text();
    EXPECT_TRUE(path.startsWith(QStringLiteral("web:/srv/")) && path.contains(QStringLiteral("…")) &&
                path.endsWith(QStringLiteral("name.txt")))
        << path.toStdString();
}

TEST_F(EditStripTest, theButtonsAreThoseOfTheQuestion)
{
    auto const session = edit("/srv/a");
    EXPECT_EQ(titles(0), (QStringList{QStringLiteral("Upload Now"), QStringLiteral("Done")}));
    std::ofstream(session->localPath()) << "saved";
    auto const &status = strip.shownLines()[0]->statusLine();
    processUntil([&] { return status.text().startsWith(QStringLiteral("changed — waiting")); });
    click(1);
    processUntil([&] { return titles(0).size() == 3; });
    EXPECT_EQ(titles(0), (QStringList{QStringLiteral("Upload"), QStringLiteral("Discard"), QStringLiteral("Cancel")}));
    click(0);
    processUntil([&] { return status.text() == QStringLiteral("⚠︎ upload failed: no way there"); });
    EXPECT_EQ(titles(0), (QStringList{QStringLiteral("Upload Now"), QStringLiteral("Done")}));
    click(1);
    processUntil([&] { return titles(0).size() == 3; });
    click(2);
    EXPECT_EQ(titles(0).size(), 2);
    click(1);
    processUntil([&] { return titles(0).size() == 3; });
    click(1);
    EXPECT_TRUE(strip.isHidden());
}

TEST_F(EditStripTest, theKeyboardGoesFromButtonToButtonAndBack)
{
    edit("/srv/a");
    edit("/srv/b");
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    auto hasLeft = false;
    strip.onLeave = [&] { hasLeft = true; };
    auto const focused = [] { return qobject_cast<QPushButton *>(QApplication::focusWidget()); };
    EXPECT_TRUE(strip.takeKeyboard());
    EXPECT_EQ(focused(), strip.shownLines()[0]->buttons()[0]);
    EXPECT_TRUE(focused()->isDefault()) << "it is seen in every style";
    QTest::keyClick(focused(), Qt::Key_Right);
    EXPECT_EQ(focused(), strip.shownLines()[0]->buttons()[1]);
    QTest::keyClick(focused(), Qt::Key_Right);
    EXPECT_EQ(focused(), strip.shownLines()[0]->buttons()[1]) << "the third button is hidden";
    QTest::keyClick(focused(), Qt::Key_Down);
    EXPECT_EQ(focused(), strip.shownLines()[1]->buttons()[1]);
    QTest::keyClick(focused(), Qt::Key_Escape);
    EXPECT_TRUE(hasLeft);
    QTest::keyClick(focused(), Qt::Key_Return);
    processUntil([&] { return strip.shownLines().size() == 1; });
}

/// A window with files that are being edited.
class EditWindowTest : public WindowTest {
protected:
    EditWindowTest()
    {
        controller = std::make_unique<MainWindowController>(
            PaneController::Collaborators{mainContext.context(), runtime.clock(), defaults}, connections, nullptr,
            WindowServices{.opening = {.edits = edits}});
        window = std::make_unique<MainWindow>(*controller, defaults, program);
        window->show();
    }

    ~EditWindowTest() override
    {
        endSessions(*edits, runtime, mainContext);
        close();
    }

    std::shared_ptr<EditSessions> edits = sessionsIn(scratch.path("edits"), runtime, mainContext);
};

TEST_F(EditWindowTest, quittingAsksBecauseOfASaveThatIsNotOnItsHost)
{
    auto const session = editCopy(*edits, scratch.path("edits"), {.connection = "web", .path = "/srv/a"});
    std::ofstream(session->localPath()) << "saved";
    processUntil([&] { return session->isUnsaved(); });
    auto hasQuit = false;
    window->askToQuit([&] { hasQuit = true; });
    auto const question = [&]() -> QDialog * {
        auto const sheets = window->findChildren<QDialog *>();
        return sheets.empty() || !sheets.front()->isVisible() ? nullptr : sheets.front();
    };
    processUntil([&] { return question(); });
    auto const words = question()->findChild<SheetText *>()->toPlainText();
    EXPECT_TRUE(words.contains(QStringLiteral("web:/srv/a"))) << words.toStdString();
    question()->reject();
    processUntil([&] { return !question(); });
    EXPECT_FALSE(hasQuit);
    session->discard();
    window->askToQuit([&] { hasQuit = true; });
    EXPECT_TRUE(hasQuit) << "there is nothing to lose any more";
}

} // namespace
} // namespace tw::test
