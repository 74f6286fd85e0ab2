#include "tests/support/MainWindowControllerTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

class ConnectionMenuTest : public MainWindowControllerTest {
protected:
    void openMenu()
    {
        controller.cmdConnect();
        loop.drain();
    }

    static std::vector<std::string> titles(RecordingDisplay const &display)
    {
        std::vector<std::string> all;
        for (auto const &item : display.menu) {
            if (item.kind != ConnectionItem::Kind::separator)
                all.push_back(item.title.english());
        }
        return all;
    }
};

TEST_F(ConnectionMenuTest, theCommandOpensTheMenuOfTheActivePane)
{
    connections.saved = {"web", "mail"};
    start({});
    controller.setActive(PaneSide::right);
    openMenu();
    EXPECT_EQ(right.menuOpenings, 1);
    EXPECT_EQ(left.menuOpenings, 0);
    EXPECT_THAT(titles(right), ::testing::ElementsAre("This Mac", "This Mac", "web", "mail"));
    EXPECT_TRUE(right.hasFocus) << "the keyboard is to be there when the menu is gone";
}

TEST_F(ConnectionMenuTest, theButtonOpensTheMenuOfItsPaneAndMakesItTheActiveOne)
{
    start({});
    controller.pane(PaneSide::right)->connectionMenuWanted();
    loop.drain();
    EXPECT_EQ(right.menuOpenings, 1);
    EXPECT_EQ(controller.activeSide(), PaneSide::right);
    EXPECT_TRUE(right.isActive);
}

TEST_F(ConnectionMenuTest, theMenuIsThereBeforeTheHostsHaveBeenRead)
{
    connections.isConfigSlow = true;
    start({});
    openMenu();
    EXPECT_THAT(titles(left), ::testing::ElementsAre("This Mac", "This Mac", "reading ~/.ssh/config…"));
    connections.readings.at(0)->succeed({"web"});
    loop.drain();
    EXPECT_THAT(titles(left), ::testing::ElementsAre("This Mac", "This Mac", "web"));
    EXPECT_EQ(left.menuOpenings, 1);
    connections.readings.at(1)->succeed({"web"});
    loop.drain();
}

TEST_F(ConnectionMenuTest, theHostsAreReadAnewForEachMenuWhichShowsThoseKnownMeanwhile)
{
    connections.saved = {"old"};
    start({});
    connections.isConfigSlow = true;
    openMenu();
    EXPECT_THAT(titles(left), ::testing::ElementsAre("This Mac", "This Mac", "old"));
    connections.readings.back()->succeed({"new"});
    loop.drain();
    EXPECT_THAT(titles(left), ::testing::ElementsAre("This Mac", "This Mac", "new"));
}

TEST_F(ConnectionMenuTest, hostsThatCannotBeReadAreNone)
{
    connections.isConfigSlow = true;
    start({});
    openMenu();
    for (auto const &reading : connections.readings)
        reading->fail(std::make_exception_ptr(std::runtime_error("no")));
    loop.drain();
    EXPECT_THAT(titles(left), ::testing::ElementsAre("This Mac", "This Mac", "No hosts in ~/.ssh/config"));
}

TEST_F(ConnectionMenuTest, aWindowThatIsClosedBeforeTheHostsAreReadHearsNothingOfThem)
{
    connections.isConfigSlow = true;
    RecordingDisplay display;
    {
        MainWindowController other({loop.context(), clock, defaults}, connections);
        other.pane(PaneSide::left)->attach(display);
        other.cmdConnect();
        loop.drain();
        other.pane(PaneSide::left)->detach(display);
    }
    auto const before = display.menu;
    connections.readings.at(0)->succeed({"web"});
    loop.drain();
    EXPECT_EQ(display.menu, before);
}

} // namespace
} // namespace tw::test
