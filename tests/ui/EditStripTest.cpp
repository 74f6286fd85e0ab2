#include "Tarnwick/Toolkit/Editing/EditStrip.h"

#include "TWEngine/Browsing/Browser.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Toolkit/Editing/EditLine.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/ui/QtLoop.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <fstream>

namespace tw::test {
namespace {

class EditStripTest : public ::testing::Test {
protected:
    EditStripTest()
    {
        auto *const column = new QVBoxLayout(&window);
        column->addWidget(&strip);
        window.show();
    }

    ~EditStripTest() override
    {
        edits->leaveForNextStart();
        // The tasks of the sessions are stopped, and end when the context comes to them.
        do {
            engine.workers().waitUntilIdle();
        } while (mainContext.context()->runPending() > 0);
    }

    static Task<std::shared_ptr<Browser>> nobody()
    {
        throw std::runtime_error("no way there");
        co_return nullptr;
    }

    EditSessions::Session edit(std::string const &path)
    {
        auto copy = EditStaging::make({.connection = "web", .path = path}, {.base = folder.path("edits")});
        copy.record.uploaded = EditStaging::stampOf(copy.path);
        return edits->add({.copy = std::move(copy), .way = EditCommand::Way::copy});
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
    std::shared_ptr<EditSessions> edits = std::make_shared<EditSessions>(
        RemoteEditSession::Ports{.engine = engine,
                                 .mainContext = mainContext.context(),
                                 .clock = std::make_shared<ManualClock>(),
                                 .host = [](std::string const & /*connection*/) { return nobody(); }},
        EditStaging::Place{.base = folder.path("edits")});
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
    EXPECT_EQ(strip.shownLines()[0]->accessibleName(), QStringLiteral("/srv/a"));
    EXPECT_EQ(strip.shownLines()[0]->statusLine().text(), QStringLiteral("watching for saves…"));
    click(1);
    processUntil([&] { return strip.shownLines().size() == 1; });
    EXPECT_EQ(strip.shownLines()[0]->session(), second);
    click(1);
    processUntil([&] { return strip.isHidden(); });
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

} // namespace
} // namespace tw::test
