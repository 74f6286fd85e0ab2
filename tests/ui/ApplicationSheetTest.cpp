#include "Tarnwick/Toolkit/Dialogs/ApplicationSheet.h"

#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"
#include "Tarnwick/Toolkit/Windows/OpenWithMenu.h"

#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
    for (auto const *const way : {"Open", "Run"}) {
        EXPECT_FALSE(button(QLatin1String(way))->isDefault());
        EXPECT_FALSE(button(QLatin1String(way))->autoDefault()) << "the keyboard may be on it";
    }
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
