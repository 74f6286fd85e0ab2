#include "Tarnwick/Toolkit/Commands/ToolBarDialog.h"

#include "tests/ui/QtLoop.h"

#include <QCheckBox>
#include <QListWidget>
#include <QPushButton>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

class ToolBarDialogTest : public testing::Test {
protected:
    ToolBarDialogTest()
    {
        dialog.onAccepted = [this](ToolBarLayout const &layout) { accepted.push_back(layout); };
        dialog.show();
        processPosted();
    }

    static QStringList titles(QListWidget const &list)
    {
        QStringList all;
        for (int row = 0; row < list.count(); ++row)
            all += list.item(row)->text();
        return all;
    }

    void choose(QListWidget &list, char const *title)
    {
        list.setCurrentItem(list.findItems(QString::fromUtf8(title), Qt::MatchExactly).value(0));
    }

    std::vector<ToolBarLayout> accepted;
    ToolBarDialog dialog{{.items = {"tw.refresh", "tw.hidden"}}, nullptr};
};

TEST_F(ToolBarDialogTest, showsTheBarAndOffersTheRest)
{
    EXPECT_EQ(titles(dialog.chosen()), (QStringList{QStringLiteral("Refresh"), QStringLiteral("Hidden")}));
    EXPECT_EQ(titles(dialog.offered()),
              (QStringList{QStringLiteral("Back"), QStringLiteral("Forward"), QStringLiteral("Connect"),
                           QStringLiteral("New Folder"), QStringLiteral("Copy"), QStringLiteral("Move"),
                           QStringLiteral("Rename"), QStringLiteral("Delete"), QStringLiteral("Same Folder"),
                           QStringLiteral("Other Pane"), QStringLiteral("Space"), QStringLiteral("Flexible Space")}));
}

TEST_F(ToolBarDialogTest, anItemIsAddedBehindTheCurrentOneAndNotOfferedAgain)
{
    choose(dialog.offered(), "Connect");
    dialog.addButton().click();
    EXPECT_THAT(dialog.layout().items, ElementsAre("tw.refresh", "tw.connect", "tw.hidden"));
    EXPECT_FALSE(titles(dialog.offered()).contains(QStringLiteral("Connect")));
}

TEST_F(ToolBarDialogTest, roomIsOfferedAgainAndAgain)
{
    choose(dialog.offered(), "Space");
    dialog.addButton().click();
    choose(dialog.offered(), "Space");
    dialog.addButton().click();
    EXPECT_THAT(dialog.layout().items, ElementsAre("tw.refresh", space, space, "tw.hidden"));
}

TEST_F(ToolBarDialogTest, anItemThatIsRemovedIsOfferedAgain)
{
    choose(dialog.chosen(), "Refresh");
    dialog.removeButton().click();
    EXPECT_THAT(dialog.layout().items, ElementsAre("tw.hidden"));
    EXPECT_TRUE(titles(dialog.offered()).contains(QStringLiteral("Refresh")));
}

TEST_F(ToolBarDialogTest, itemsAreMovedToTheEndsAndNoFurther)
{
    choose(dialog.chosen(), "Hidden");
    EXPECT_FALSE(dialog.downButton().isEnabled());
    dialog.upButton().click();
    EXPECT_THAT(dialog.layout().items, ElementsAre("tw.hidden", "tw.refresh"));
    EXPECT_FALSE(dialog.upButton().isEnabled());
    dialog.downButton().click();
    EXPECT_THAT(dialog.layout().items, ElementsAre("tw.refresh", "tw.hidden"));
}

TEST_F(ToolBarDialogTest, anItemThatIsDroppedOnTheBarIsThereOnce)
{
    // What a drop does: a copy comes in, and then the original goes.
    choose(dialog.offered(), "Connect");
    auto *const dragged = dialog.offered().currentItem();
    dialog.chosen().insertItem(0, dragged->clone());
    delete dialog.offered().takeItem(dialog.offered().row(dragged));
    processPosted();
    EXPECT_THAT(dialog.layout().items, ElementsAre("tw.connect", "tw.refresh", "tw.hidden"));
    EXPECT_FALSE(titles(dialog.offered()).contains(QStringLiteral("Connect")));
    EXPECT_TRUE(titles(dialog.offered()).contains(QStringLiteral("Space")));
}

TEST_F(ToolBarDialogTest, agreeingReportsTheLayout)
{
    dialog.labels().setChecked(true);
    dialog.accept();
    EXPECT_THAT(accepted, ElementsAre(ToolBarLayout{.items = {"tw.refresh", "tw.hidden"},
                                                    .labels = ToolBarLayout::Labels::shown}));
}

TEST_F(ToolBarDialogTest, givingUpReportsNothing)
{
    dialog.removeButton().click();
    dialog.reject();
    EXPECT_TRUE(accepted.empty());
}

} // namespace
} // namespace tw::test
