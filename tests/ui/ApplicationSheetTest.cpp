#include "Tarnwick/Toolkit/Dialogs/ApplicationSheet.h"

#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"
#include "Tarnwick/Toolkit/Windows/OpenWithMenu.h"
#include "tests/support/TemporaryFolder.h"

#include <QImage>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace tw::test {
namespace {

using testing::ElementsAre;

std::vector<Application> someApplications()
{
    return {{.identifier = "pen.desktop", .name = "Pen & Ink", .isDefault = true},
            {.identifier = "eye.desktop", .name = "Eye", .keywords = "look picture"}};
}

class ApplicationSheetTest : public testing::Test {
protected:
    std::vector<std::string> shown() const
    {
        std::vector<std::string> names;
        for (int row = 0; row < sheet.list().count(); ++row) {
            if (!sheet.list().item(row)->isHidden())
                names.push_back(sheet.list().item(row)->text().toStdString());
        }
        return names;
    }

    QWidget window;
    ApplicationSheet sheet{
        {.file = "a.png", .suggested = someApplications(), .others = {{.identifier = "ball.desktop", .name = "Ball"}}},
        &window};
};

TEST_F(ApplicationSheetTest, theUsualApplicationIsFirstAndChosen)
{
    EXPECT_THAT(shown(), ElementsAre("Pen & Ink (default)", "Eye", "Ball"));
    EXPECT_EQ(sheet.chosen(), "pen.desktop");
}

TEST_F(ApplicationSheetTest, typingLeavesWhatMatchesAndArrowsChoose)
{
    QTest::keyClick(&sheet.field(), Qt::Key_Down);
    EXPECT_EQ(sheet.chosen(), "eye.desktop");
    sheet.field().setText(QStringLiteral("LOOK"));
    EXPECT_THAT(shown(), ElementsAre("Eye"));
    EXPECT_EQ(sheet.chosen(), "eye.desktop");
    sheet.field().setText(QStringLiteral("l"));
    EXPECT_THAT(shown(), ElementsAre("Eye", "Ball"));
    QTest::keyClick(&sheet.field(), Qt::Key_Down);
    EXPECT_EQ(sheet.chosen(), "ball.desktop");
}

TEST_F(ApplicationSheetTest, withNothingChosenItStaysOpen)
{
    QSignalSpy const finished(&sheet, &QDialog::finished);
    sheet.field().setText(QStringLiteral("nobody"));
    EXPECT_EQ(sheet.chosen(), "");
    sheet.accept();
    EXPECT_EQ(finished.count(), 0);
    sheet.field().clear();
    sheet.accept();
    EXPECT_EQ(finished.count(), 1);
}

/// Where the name of a row begins: the icons of this test have no colour.
int beginningOfName(QImage const &list, QRect const &row)
{
    auto const ground = list.pixel(row.right() - 1, row.center().y());
    for (int x = row.left(); x <= row.right(); ++x) {
        for (int y = row.top(); y <= row.bottom(); ++y) {
            if (list.pixel(x, y) != ground)
                return x;
        }
    }
    return -1;
}

TEST(ApplicationNamesTest, namesBeginBelowOneAnotherWhateverTheWidthOfTheirIcons)
{
    TemporaryFolder const folder;
    std::vector<Application> all{{.identifier = "chosen.desktop", .name = "H"},
                                 {.identifier = "none.desktop", .name = "H", .icon = folder.path("missing.png")}};
    for (auto const width : {4, 16}) {
        QImage icon(width, 16, QImage::Format_ARGB32);
        icon.fill(Qt::transparent);
        auto const path = folder.path(std::to_string(width) + ".png");
        ASSERT_TRUE(icon.save(QString::fromStdString(path)));
        all.push_back({.identifier = path + ".desktop", .name = "H", .icon = path});
    }
    QWidget window;
    ApplicationSheet sheet({.file = "a.png", .suggested = all, .others = {}}, &window);
    sheet.show();
    auto &list = sheet.list();
    auto const picture = list.viewport()->grab().toImage();
    std::set<int> beginnings;
    for (int row = 1; row < list.count(); ++row) // the first is selected, and has another ground
        beginnings.insert(beginningOfName(picture, list.visualItemRect(list.item(row))));
    EXPECT_EQ(beginnings.size(), 1U);
    EXPECT_GT(*beginnings.begin(), 0);
}

TEST(QuestionSheetTest, eachWayIsAButtonAndReturnPressesTheFirst)
{
    QWidget window;
    QPointer sheet(new QuestionSheet(
        Dialogs::Choice{.title = "Open x?", .message = "m", .ways = {"View", "Open", "Run"}}, &window));
    auto const button = [&](QString const &text) {
        auto const buttons = sheet->buttons().buttons();
        return qobject_cast<QPushButton *>(*std::ranges::find(buttons, text, &QAbstractButton::text));
    };
    EXPECT_TRUE(button(QStringLiteral("View"))->isDefault());
    for (auto const *const way : {"Open", "Run"})
        EXPECT_FALSE(button(QLatin1String(way))->isDefault());
    button(QStringLiteral("Cancel"))->click();
    EXPECT_EQ(sheet->wayTaken(), std::nullopt);
    QSignalSpy finished(sheet, &QDialog::finished);
    button(QStringLiteral("Run"))->click();
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(sheet->wayTaken(), 2U);
}

TEST(OpenWithMenuTest, theApplicationsStandBeforeTheOtherOne)
{
    QMenu menu;
    menu.addAction(QStringLiteral("Other Application…"));
    std::vector<std::string> picked;
    auto const applications = someApplications();
    OpenWithMenu::fill(menu, applications, [&](std::string const &chosen) { picked.push_back(chosen); });
    std::vector<std::string> titles;
    for (auto const *action : menu.actions())
        titles.push_back(action->text().toStdString());
    EXPECT_THAT(titles, ElementsAre("Pen && Ink (default)", "Eye", "", "Other Application…"));
    menu.actions()[1]->trigger();
    EXPECT_THAT(picked, ElementsAre("eye.desktop"));
}

} // namespace
} // namespace tw::test
