#include "Tarnwick/Table/ColumnLayout.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;

class ColumnLayoutTest : public ::testing::Test {
protected:
    ColumnLayout layout{{150, 50, 60, 120, 80}};
};

TEST_F(ColumnLayoutTest, theNameTakesWhatTheOthersLeave)
{
    EXPECT_THAT(layout.fitted(600), ElementsAre(290, 50, 60, 120, 80));
    EXPECT_THAT(layout.fitted(460), ElementsAre(150, 50, 60, 120, 80));
}

TEST_F(ColumnLayoutTest, whereTheNameWouldBeTooNarrowTheLeastImportantColumnsGo)
{
    EXPECT_THAT(layout.fitted(459), ElementsAre(229, 50, 60, 120, 0));
    EXPECT_THAT(layout.fitted(379), ElementsAre(269, 50, 60, 0, 0));
    EXPECT_THAT(layout.fitted(259), ElementsAre(209, 50, 0, 0, 0));
}

TEST_F(ColumnLayoutTest, theExtensionStaysHoweverNarrowItGets)
{
    EXPECT_THAT(layout.fitted(100), ElementsAre(50, 50, 0, 0, 0));
    EXPECT_GT(layout.fitted(0)[0], 0);
}

TEST_F(ColumnLayoutTest, aChosenWidthIsTakenFromTheName)
{
    layout.choose(PaneColumn::date, 140, 600);
    EXPECT_THAT(layout.fitted(600), ElementsAre(270, 50, 60, 140, 80));
}

TEST_F(ColumnLayoutTest, noChoiceTakesMoreThanTheNameCanGive)
{
    layout.choose(PaneColumn::date, 5000, 500);
    EXPECT_THAT(layout.fitted(500), ElementsAre(150, 50, 60, 160, 80));
}

TEST_F(ColumnLayoutTest, aColumnStaysWideEnoughToBeGrabbed)
{
    layout.choose(PaneColumn::ext, -20, 600);
    EXPECT_EQ(layout.fitted(600)[1], 24);
}

TEST_F(ColumnLayoutTest, theNameHasNoWidthOfItsOwn)
{
    layout.choose(PaneColumn::name, 10, 600);
    EXPECT_THAT(layout.fitted(600), ElementsAre(290, 50, 60, 120, 80));
    EXPECT_EQ(layout.text(), "");
}

TEST_F(ColumnLayoutTest, anotherFontChangesOnlyWhatWasNotChosen)
{
    layout.choose(PaneColumn::date, 140, 600);
    layout.propose({150, 70, 80, 200, 100});
    EXPECT_THAT(layout.fitted(600), ElementsAre(210, 70, 80, 140, 100));
    layout.reset(PaneColumn::date);
    EXPECT_EQ(layout.fitted(700)[3], 200);
}

TEST_F(ColumnLayoutTest, choicesAreStoredAndTakenOver)
{
    layout.choose(PaneColumn::ext, 66, 600);
    layout.choose(PaneColumn::attr, 90, 600);
    EXPECT_EQ(layout.text(), "ext:66 attr:90");

    ColumnLayout other({150, 50, 60, 120, 80});
    other.adopt(layout.text());
    EXPECT_EQ(other.fitted(600), layout.fitted(600));
    other.adopt("");
    EXPECT_EQ(other.text(), "");
}

TEST_F(ColumnLayoutTest, aColumnThatIsNotWantedLeavesItsRoomToTheName)
{
    layout.want(PaneColumn::date, false);
    EXPECT_THAT(layout.fitted(600), ElementsAre(410, 50, 60, 0, 80));
    layout.want(PaneColumn::date, true);
    EXPECT_THAT(layout.fitted(600), ElementsAre(290, 50, 60, 120, 80));
}

TEST_F(ColumnLayoutTest, theNameIsAlwaysThere)
{
    layout.want(PaneColumn::name, false);
    EXPECT_TRUE(layout.isWanted(PaneColumn::name));
    layout.adopt("-name -ext");
    EXPECT_THAT(layout.fitted(600), ElementsAre(340, 0, 60, 120, 80));
}

TEST_F(ColumnLayoutTest, theNameStandsBeforeAllOtherColumns)
{
    layout.arrange(std::array{PaneColumn::date, PaneColumn::name, PaneColumn::ext});
    EXPECT_THAT(layout.order(),
                ElementsAre(PaneColumn::name, PaneColumn::date, PaneColumn::ext, PaneColumn::size, PaneColumn::attr));
}

TEST_F(ColumnLayoutTest, anOrderIsStoredAndTakenOver)
{
    layout.want(PaneColumn::ext, false);
    layout.arrange(std::array{PaneColumn::attr, PaneColumn::size, PaneColumn::date, PaneColumn::ext});
    EXPECT_EQ(layout.text(), "-ext order=attr,size,date,ext");
    ColumnLayout other({150, 50, 60, 120, 80});
    other.adopt(layout.text());
    EXPECT_EQ(other.order(), layout.order());
    other.adopt("");
    EXPECT_EQ(other.order(), paneColumns);
}

TEST_F(ColumnLayoutTest, aStoredOrderWithMistakesHasEveryColumnOnce)
{
    layout.adopt("order=date,,what,date,name,attr,");
    EXPECT_THAT(layout.order(),
                ElementsAre(PaneColumn::name, PaneColumn::date, PaneColumn::attr, PaneColumn::ext, PaneColumn::size));
    layout.adopt("order=");
    EXPECT_EQ(layout.order(), paneColumns);
}

TEST_F(ColumnLayoutTest, whatIsNotWantedIsStoredWithItsWidth)
{
    layout.choose(PaneColumn::date, 140, 600);
    layout.want(PaneColumn::date, false);
    layout.want(PaneColumn::attr, false);
    EXPECT_EQ(layout.text(), "date:140 -date -attr");
    ColumnLayout other({150, 50, 60, 120, 80});
    other.adopt(layout.text());
    EXPECT_EQ(other.fitted(600), layout.fitted(600));
}

TEST_F(ColumnLayoutTest, whatMakesNoSenseInStoredChoicesIsLeftOut)
{
    layout.adopt("ext:66 date: size:x attr:12345678901234567890 name:5 what:70 date:3 : size:70x  attr -what - --size");
    EXPECT_EQ(layout.text(), "ext:66");
}

} // namespace
} // namespace tw::test
