#include "Tarnwick/Toolkit/Table/ColumnsDialog.h"

#include "tests/ui/QtLoop.h"

#include <QListWidget>
#include <QPushButton>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

class ColumnsDialogTest : public ::testing::Test {
protected:
    ColumnsDialogTest()
    {
        dialog.onAccepted = [this](std::string const &choices) { accepted.push_back(choices); };
        dialog.show();
        processPosted();
    }

    /// With a minus before those that are not shown.
    std::vector<std::string> shown()
    {
        std::vector<std::string> all;
        for (int row = 0; row < dialog.columns().count(); ++row) {
            auto const &item = *dialog.columns().item(row);
            all.push_back((item.checkState() == Qt::Checked ? "" : "-") + item.text().toStdString());
        }
        return all;
    }

    std::vector<std::string> accepted;
    ColumnsDialog dialog{"date:140 -attr order=date,ext", nullptr};
};

TEST_F(ColumnsDialogTest, showsTheColumnsInTheirOrder)
{
    EXPECT_THAT(shown(), ElementsAre("Date", "Ext", "Size", "-Attr"));
}

TEST_F(ColumnsDialogTest, aColumnIsMovedToTheEndsAndNoFurther)
{
    EXPECT_FALSE(dialog.upButton().isEnabled());
    dialog.downButton().click();
    EXPECT_THAT(shown(), ElementsAre("Ext", "Date", "Size", "-Attr"));
    dialog.columns().setCurrentRow(3);
    EXPECT_FALSE(dialog.downButton().isEnabled());
    dialog.upButton().click();
    EXPECT_THAT(shown(), ElementsAre("Ext", "Date", "-Attr", "Size"));
}

TEST_F(ColumnsDialogTest, agreeingReportsTheChoicesWithTheWidths)
{
    dialog.columns().item(1)->setCheckState(Qt::Unchecked);
    dialog.accept();
    EXPECT_THAT(accepted, ElementsAre("-ext date:140 -attr order=date,ext,size,attr"));
}

TEST_F(ColumnsDialogTest, theUsualColumnsHaveTheirUsualWidths)
{
    dialog.showUsual();
    EXPECT_THAT(shown(), ElementsAre("Ext", "Size", "Date", "Attr"));
    dialog.accept();
    EXPECT_THAT(accepted, ElementsAre(""));
}

TEST_F(ColumnsDialogTest, givingUpReportsNothing)
{
    dialog.downButton().click();
    dialog.reject();
    EXPECT_TRUE(accepted.empty());
}

} // namespace
} // namespace tw::test
