#include "Tarnwick/Window/TabItem.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

TEST(TabItemTest, theTitleIsTheLastPartOfThePath)
{
    EXPECT_EQ(TabItem::of({"local", "/var/log", true}).title, "log");
    EXPECT_EQ(TabItem::of({"local", "/var/log/", true}).title, "log");
    EXPECT_EQ(TabItem::of({"local", "/", true}).title, "/");
    EXPECT_EQ(TabItem::of({"local", "", false}).title, "/");
}

TEST(TabItemTest, aHostsNameStandsBeforeItsFolder)
{
    EXPECT_EQ(TabItem::of({"web", "/var/log", true}).title, "web:log");
    EXPECT_EQ(TabItem::of({"web", "/", true}).title, "web:/");
    EXPECT_TRUE(TabItem::of({"web", "/", true}).isRemote);
    EXPECT_FALSE(TabItem::of({"local", "/", true}).isRemote);
}

TEST(TabItemTest, theToolTipIsTheWholePlace)
{
    EXPECT_EQ(TabItem::of({"web", "/var/log", true}).toolTip, "web:/var/log");
    EXPECT_EQ(TabItem::of({"local", "/usr", true}).toolTip, "local:/usr");
    EXPECT_EQ(TabItem::of({"pc", "/C:/Users", true}).toolTip, "pc:C:/Users");
}

TEST(TabItemTest, aNameCannotBreakTheLineOrHideAnything)
{
    EXPECT_EQ(TabItem::of({"local", "/a\nb\xff", true}).title, "a\xE2\x90\x8A"
                                                               "b\xEF\xBF\xBD");
    EXPECT_EQ(TabItem::of({"a\xE2\x80\xAE"
                           "b",
                           "/", true})
                  .title,
              "a\xEF\xBF\xBD"
              "b:/");
}

} // namespace
} // namespace tw::test
