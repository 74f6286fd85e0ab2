#include "Tarnwick/Commands/ToolBarLayout.h"

#include "Tarnwick/Commands/CommandTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace tw::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using Labels = ToolBarLayout::Labels;

TEST(ToolBarLayoutTest, everyItemIsACommandWithATitleAndPictures)
{
    std::set<std::string_view> seen;
    for (auto const &item : toolBarItems()) {
        EXPECT_TRUE(seen.insert(item.identifier).second) << item.identifier;
        EXPECT_FALSE(item.label.empty());
        EXPECT_EQ(toolBarItem(item.identifier), &item);
        if (!item.command)
            continue;
        EXPECT_FALSE(rowOf(*item.command).toolTip.empty()) << item.identifier;
        EXPECT_FALSE(item.ownIcon.empty()) << item.identifier;
    }
}

TEST(ToolBarLayoutTest, theUsualOneIsMadeOfItemsAndShowsIconsOnly)
{
    auto const usual = ToolBarLayout::usual();
    for (auto const identifier : usual.items)
        EXPECT_NE(toolBarItem(identifier), nullptr) << identifier;
    EXPECT_EQ(usual.labels, Labels::hidden);
    EXPECT_THAT(usual.items, Not(Contains("tw.swap"))) << "it is offered, and no more";
    EXPECT_THAT(usual.available(), ElementsAre("tw.swap", space, flexibleSpace));
}

TEST(ToolBarLayoutTest, whatIsStoredIsReadAgain)
{
    ToolBarLayout const layout{.items = {"tw.hidden", space, space, "tw.refresh"}, .labels = Labels::shown};
    EXPECT_EQ(ToolBarLayout::fromText(layout.text()), layout);
    EXPECT_EQ(ToolBarLayout::fromText(ToolBarLayout::usual().text()), ToolBarLayout::usual());
    ToolBarLayout const empty;
    EXPECT_EQ(ToolBarLayout::fromText(empty.text()), empty) << "an empty bar stays empty";
}

TEST(ToolBarLayoutTest, anItemThatIsNotKnownOrThereAlreadyIsLeftOut)
{
    EXPECT_THAT(ToolBarLayout::fromText("icons tw.refresh  tw.nothing tw.refresh tw.hidden")->items,
                ElementsAre("tw.refresh", "tw.hidden"));
}

TEST(ToolBarLayoutTest, anyOtherTextIsNoLayout)
{
    for (auto const *text : {"", " ", "tw.refresh", "{\"a\": 1}"})
        EXPECT_EQ(ToolBarLayout::fromText(text), std::nullopt) << text;
}

TEST(ToolBarLayoutTest, aBarHasAnEnd)
{
    std::string text = "icons";
    for (std::size_t count = 0; count < mostToolBarItems + 5; ++count)
        text += " tw.space";
    EXPECT_THAT(ToolBarLayout::fromText(text)->items, SizeIs(mostToolBarItems));
}

TEST(ToolBarLayoutTest, everythingCanBeAddedToAnEmptyBar)
{
    EXPECT_THAT(ToolBarLayout().available(), SizeIs(toolBarItems().size()));
    EXPECT_THAT(ToolBarLayout().items, IsEmpty());
}

} // namespace
} // namespace tw::test
