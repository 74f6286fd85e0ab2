// What a screen reader is notified of.

#include "Tarnwick/Toolkit/Notices/NoticeStrip.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"
#include "tests/ui/HeardEvents.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QMenuBar>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class AnnouncementTest : public WindowTest {
protected:
    AnnouncementTest()
    {
        left.file("a.txt");
        left.file("b.txt");
    }

    HeardEvents heard;
};

TEST_F(AnnouncementTest, aNewTextOfTheStatusLineIsAnnouncedOnce)
{
    open();
    auto &line = window->pane(PaneSide::left).statusLine();
    auto const before = heard.namesAt(QAccessible::NameChanged, line).size();
    active().showStatus("something new");
    active().showStatus("something new");
    auto const names = heard.namesAt(QAccessible::NameChanged, line);
    EXPECT_EQ(names.size(), before + 1);
    EXPECT_EQ(names.back(), "something new");
}

TEST_F(AnnouncementTest, aStripThatComesIsAnAlertWithItsWords)
{
    open();
    auto &strip = window->pane(PaneSide::left).noticeStrip();
    EXPECT_THAT(heard.namesAt(QAccessible::Alert, strip), IsEmpty());
    active().navigate(left.path("gone"));
    processUntil([&] { return !notice(PaneSide::left).empty(); });
    EXPECT_THAT(heard.namesAt(QAccessible::Alert, strip), ElementsAre(notice(PaneSide::left)));
}

TEST_F(AnnouncementTest, theRowUnderTheCursorIsAnnouncedWithItsWholeName)
{
    open();
    press(Qt::Key_Down);
    EXPECT_EQ(heard.namesAt(QAccessible::Focus, activeTable()).back(), "a.txt");
    press(Qt::Key_Down);
    EXPECT_EQ(heard.namesAt(QAccessible::Focus, activeTable()).back(), "b.txt");
}

TEST_F(AnnouncementTest, aMarkIsAnnounced)
{
    open();
    press(Qt::Key_End);
    press(Qt::Key_Insert);
    EXPECT_EQ(heard.namesAt(QAccessible::NameChanged, activeTable()).back(), "b.txt, marked");
}

TEST_F(AnnouncementTest, insertAnnouncesTheNameThatItMarksAndThenTheNextOne)
{
    open();
    press(Qt::Key_Down);
    press(Qt::Key_Insert);
    EXPECT_EQ(heard.namesAt(QAccessible::NameChanged, activeTable()).back(), "a.txt, marked");
    EXPECT_EQ(heard.namesAt(QAccessible::Focus, activeTable()).back(), "b.txt");
    press(Qt::Key_Up);
    press(Qt::Key_Insert);
    EXPECT_EQ(heard.namesAt(QAccessible::NameChanged, activeTable()).back(), "a.txt");
}

TEST_F(AnnouncementTest, everyControlOfTheWindowHasAName)
{
    open();
    auto const expectName = [](QWidget const &widget) {
        auto *const interface = QAccessible::queryAccessibleInterface(const_cast<QWidget *>(&widget));
        EXPECT_THAT(interface->text(QAccessible::Name).toStdString(), Not(IsEmpty()))
            << widget.metaObject()->className();
    };
    auto count = 0;
    for (auto const *const widget : window->findChildren<QWidget *>()) {
        auto const isControl = qobject_cast<QAbstractButton const *>(widget) ||
                               qobject_cast<QLineEdit const *>(widget) || widget->focusPolicy() != Qt::NoFocus;
        if (isControl && widget->isVisible()) {
            expectName(*widget);
            ++count;
        }
    }
    EXPECT_GT(count, 10);
}

} // namespace
} // namespace tw::test
