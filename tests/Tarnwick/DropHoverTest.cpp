#include "Tarnwick/Window/DropHover.h"

#include "Tarnwick/Dragging/EdgeScroll.h"
#include "Tarnwick/Window/PaneContainer.h"
#include "tests/support/FakeConnections.h"
#include "tests/support/FakePlace.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using std::chrono_literals::operator""ms;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RecordingDropDisplay final : public DropDisplay {
public:
    Target target;
    std::vector<int> scrolled;
    std::function<void(TransferKind)> choose;

    void showDropTarget(Target const &shown) override { target = shown; }

    void scrollRows(int pixels) override { scrolled.push_back(pixels); }

    void askHow(std::function<void(TransferKind kind)> onChosen) override { choose = std::move(onChosen); }

    std::string words() const { return target.words.english(); }
};

/// Over a side with a pane on /dst, which has a folder and a file.
class DropHoverTest : public ::testing::Test {
protected:
    using Action = DropDecision::Action;
    using Kind = DropSpot::Kind;
    using Mark = DropDisplay::Target::Mark;

    DropHoverTest()
    {
        place->folder("/dst");
        place->folder("/dst/inner");
        place->file("/dst/file", "");
        side.restore(PaneSpec{"local", "/dst", true});
        loop.drain();
        hover->attach(display);
    }

    ~DropHoverTest() override
    {
        hover.reset();
        auto const ended = loop.start(browser->shutdown());
        loop.drain();
        EXPECT_TRUE(ended.isDone());
        clock->advance(std::chrono::seconds(10));
        loop.drain();
    }

    PaneController &pane() { return *side.activePane(); }

    void pass(std::chrono::milliseconds time)
    {
        loop.drain();
        clock->advance(time);
        loop.drain();
    }

    Action over(DropSpot spot, DragKeys held = {}) { return hover->over(offer, spot, held).action; }

    DropSpot rowOf(std::string_view name, int scroll = 0)
    {
        return {.kind = Kind::row, .index = pane().model().rowForName(name).value(), .scroll = scroll};
    }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    MemoryDefaults defaults;
    std::shared_ptr<FakePlace> place = std::make_shared<FakePlace>("local");
    std::shared_ptr<Browser> browser = std::make_shared<Browser>(
        place, Browser::Collaborators{.strand = Strand(loop.context()), .clock = clock, .store = nullptr},
        Browser::Config{});
    FakeConnections connections{browser};
    PaneController::Collaborators collaborators{.mainContext = loop.context(), .clock = clock, .defaults = defaults};
    PaneContainer side{collaborators,
                       connections,
                       {.configurePane = [](PaneController & /*pane*/) {},
                        .onTabsChanged = [] {},
                        .onSelected = [] {},
                        .open = [this](PaneSpec to, auto const &in) { in->open(std::move(to), connections); }}};
    DropHover::Offer offer = std::make_shared<DragOffer const>(
        DragOffer{.files = FileDrag{.connection = "web1", .directory = "/src", .names = {"a"}}});
    RecordingDropDisplay display;
    std::vector<DropHover::Drop> drops;
    std::unique_ptr<DropHover> hover = std::make_unique<DropHover>(
        collaborators, side, [this](DropHover::Drop drop) { drops.push_back(std::move(drop)); });
};

TEST_F(DropHoverTest, theTargetIsTheRowOfAFolderOrElseTheFolderOnShow)
{
    over(rowOf("inner"));
    EXPECT_EQ(display.words(), "copy 1 item to /dst/inner");
    EXPECT_EQ(display.target.mark, Mark::row);
    EXPECT_EQ(display.target.row, rowOf("inner").index);
    over(rowOf("file"));
    EXPECT_EQ(display.words(), "copy 1 item to /dst");
    EXPECT_EQ(display.target.mark, Mark::pane);
    over({.kind = Kind::row, .index = 0});
    EXPECT_EQ(display.words(), "copy 1 item to /") << "the row of the folder above";
    over({.kind = Kind::pane});
    EXPECT_EQ(display.words(), "copy 1 item to /dst");
    over({.kind = Kind::pathPart, .index = 0});
    EXPECT_EQ(display.words(), "copy 1 item to /");
    over({.kind = Kind::pathPart, .index = 1});
    EXPECT_EQ(display.words(), "copy 1 item to /dst");
    EXPECT_EQ(over({}), Action::refuse);
}

TEST_F(DropHoverTest, whatADropWouldNotDoIsSaidWhileTheDragIsOverIt)
{
    offer = std::make_shared<DragOffer const>(
        DragOffer{.files = FileDrag{.connection = "local", .directory = "/dst", .names = {"inner"}}});
    EXPECT_EQ(over({.kind = Kind::pane}), Action::refuse);
    EXPECT_EQ(display.words(), "already here");
    EXPECT_EQ(over(rowOf("inner")), Action::refuse);
    EXPECT_EQ(display.words(), "a folder cannot go into itself");
    EXPECT_EQ(display.target.mark, Mark::none);
    EXPECT_TRUE(hover->drop(offer, rowOf("inner"), {}).isRefused());
    EXPECT_THAT(drops, IsEmpty());
}

TEST_F(DropHoverTest, aDropGoesWhereItWasShownAndTheWordsGo)
{
    over(rowOf("inner"), {.shift = true});
    EXPECT_EQ(hover->drop(offer, rowOf("inner"), {.shift = true}).action, Action::move);
    ASSERT_EQ(drops.size(), 1U);
    EXPECT_EQ(drops.front().folder, "/dst/inner");
    EXPECT_EQ(drops.front().kind, TransferKind::move);
    EXPECT_EQ(display.target, DropDisplay::Target());
}

TEST_F(DropHoverTest, withAltTheUserChoosesAfterTheDrop)
{
    hover->drop(offer, {.kind = Kind::pane}, {.alt = true});
    EXPECT_THAT(drops, IsEmpty());
    ASSERT_TRUE(display.choose);
    display.choose(TransferKind::move);
    ASSERT_EQ(drops.size(), 1U);
    EXPECT_EQ(drops.front().kind, TransferKind::move);
}

TEST_F(DropHoverTest, aFolderUnderARestingDragOpens)
{
    over(rowOf("inner"));
    pass(799ms);
    EXPECT_EQ(pane().requestedPath(), "/dst");
    pass(1ms);
    EXPECT_EQ(pane().requestedPath(), "/dst/inner");
    loop.drain();
    EXPECT_EQ(pane().pathOnShow(), "/dst/inner");
}

TEST_F(DropHoverTest, aFolderThatCameUnderARestingPointerDoesNotOpen)
{
    hover->over(offer, rowOf("inner"), {}, DropHover::Cause::rows);
    pass(5000ms);
    EXPECT_EQ(pane().requestedPath(), "/dst");
    over(rowOf("inner"));
    pass(800ms);
    EXPECT_EQ(pane().requestedPath(), "/dst/inner") << "once the pointer has moved on it";
    loop.drain();
}

TEST_F(DropHoverTest, aDragThatGoesOnOpensNothing)
{
    over(rowOf("inner"));
    pass(500ms);
    over(rowOf("file"));
    over(rowOf("inner"));
    pass(500ms);
    hover->leave();
    pass(5000ms);
    EXPECT_EQ(pane().requestedPath(), "/dst");
}

TEST_F(DropHoverTest, aTabUnderARestingDragShows)
{
    side.duplicateCurrentTab();
    loop.drain();
    ASSERT_EQ(side.activeIndex(), 1U);
    EXPECT_EQ(over({.kind = Kind::tab, .index = 0}), Action::copy) << "a drop need not wait";
    pass(599ms);
    EXPECT_EQ(side.activeIndex(), 1U);
    pass(1ms);
    EXPECT_EQ(side.activeIndex(), 0U);
    EXPECT_EQ(over({.kind = Kind::tab, .index = 7}), Action::refuse);
    loop.drain();
}

TEST_F(DropHoverTest, rowsScrollAsLongAsTheDragIsAtTheEdge)
{
    over(rowOf("file", 5));
    pass(EdgeScroll::delay - 1ms);
    EXPECT_THAT(display.scrolled, IsEmpty()) << "a drag on its way through";
    pass(1ms);
    pass(EdgeScroll::interval);
    over(rowOf("file", 9));
    pass(EdgeScroll::interval);
    EXPECT_THAT(display.scrolled, ElementsAre(5, 5, 9));
    over(rowOf("file"));
    pass(5000ms);
    EXPECT_THAT(display.scrolled, ElementsAre(5, 5, 9));
}

} // namespace
} // namespace tw::test
