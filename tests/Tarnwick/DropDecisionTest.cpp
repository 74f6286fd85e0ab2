#include "Tarnwick/Dragging/DropDecision.h"

#include "Tarnwick/Dragging/EdgeScroll.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

class DropDecisionTest : public ::testing::Test {
protected:
    using Action = DropDecision::Action;

    /// What is dragged out of /src of web1.
    static DragOffer fromHost(std::vector<std::string> names)
    {
        return {.files = FileDrag{.connection = "web1", .directory = "/src", .names = std::move(names)}};
    }

    /// What another program offers.
    static DragOffer fromOutside(std::vector<std::string> paths) { return {.paths = std::move(paths)}; }

    static DropDecision on(DragOffer const &offer, std::string connection, std::string folder, DragKeys held = {})
    {
        return DropDecision::of(offer, {.connection = std::move(connection), .folder = std::move(folder)}, held);
    }

    static std::string words(DropDecision const &decision) { return decision.words.english(); }
};

TEST_F(DropDecisionTest, aPlainDragAndControlCopyShiftMovesAndAltAsks)
{
    auto const offer = fromHost({"a", "b"});
    EXPECT_EQ(on(offer, "local", "/dst").action, Action::copy);
    EXPECT_EQ(on(offer, "local", "/dst", {.control = true}).action, Action::copy);
    EXPECT_EQ(on(offer, "local", "/dst", {.shift = true}).action, Action::move);
    EXPECT_EQ(on(offer, "local", "/dst", {.alt = true}).action, Action::ask);
    EXPECT_EQ(on(offer, "local", "/dst", {.shift = true, .control = true}).action, Action::copy);
}

TEST_F(DropDecisionTest, itSaysWhatWouldBeDone)
{
    auto const offer = fromHost({"a", "b"});
    EXPECT_EQ(words(on(offer, "local", "/dst")), "copy 2 items to /dst");
    EXPECT_EQ(words(on(offer, "web1", "/dst", {.shift = true})), "move 2 items to web1:/dst");
    EXPECT_EQ(words(on(offer, "web2", "/dst", {.alt = true})), "copy or move 2 items to web2:/dst");
}

TEST_F(DropDecisionTest, whatItsSourceKeepsIsNotMoved)
{
    auto offer = fromOutside({"/mnt/a"});
    offer.canMove = false;
    EXPECT_EQ(on(offer, "local", "/dst", {.shift = true}).action, Action::copy);
    EXPECT_EQ(on(offer, "local", "/dst", {.alt = true}).action, Action::copy);
}

TEST_F(DropDecisionTest, nonsenseIsRefusedWithItsReason)
{
    auto const own = fromHost({"a", "b"});
    auto const foreign = fromOutside({"/mnt/a", "/mnt/b"});

    struct Case {
        DragOffer offer;
        std::string connection;
        std::string folder;
        std::string reason; ///< empty: it is not refused
    };

    std::vector<Case> const cases{
        {own, "web1", "/src", "already here"},
        {own, "web1", "/src/a", "a folder cannot go into itself"},
        {own, "web1", "/src/b/deep/down", "a folder cannot go into itself"},
        {own, "web1", "/src/ab", ""},
        {own, "web1", "/", ""},
        {own, "web2", "/src", ""},
        {own, "web2", "/src/a", ""},
        {foreign, "local", "/mnt", "already here"},
        {foreign, "local", "/mnt/b", "a folder cannot go into itself"},
        {foreign, "local", "/mnt/b/c", "a folder cannot go into itself"},
        {foreign, "local", "/mnt/bc", ""},
        {foreign, "web1", "/mnt", ""},
        {fromOutside({"/mnt/a", "/more/b"}), "local", "/mnt", ""},
        {fromOutside({"/a"}), "local", "/", "already here"},
        {{.files = FileDrag{.connection = "local", .directory = "/", .names = {"etc"}}},
         "local",
         "/etc/ssh",
         "a folder cannot go into itself"},
        {{}, "local", "/dst", "there are no files in this"},
    };
    for (auto const &each : cases) {
        auto const decision = on(each.offer, each.connection, each.folder);
        EXPECT_EQ(decision.isRefused(), !each.reason.empty()) << each.connection << ":" << each.folder;
        if (!each.reason.empty())
            EXPECT_EQ(words(decision), each.reason) << each.connection << ":" << each.folder;
    }
}

TEST_F(DropDecisionTest, nothingIsDroppedWhereNothingCanBeWritten)
{
    auto const decision =
        DropDecision::of(fromHost({"a"}), {.connection = "web2", .folder = "/dst", .isWritable = false}, {});
    EXPECT_TRUE(decision.isRefused());
    EXPECT_EQ(words(decision), "web2 is read-only");
}

TEST_F(DropDecisionTest, rowsScrollNearTheEdgesTheFasterTheNearerAndNeverMoreThanARow)
{
    constexpr int height = 400;
    constexpr int row = 20;
    EXPECT_EQ(EdgeScroll::step(height / 2, height, row), 0);
    EXPECT_EQ(EdgeScroll::step(0, height, row), -row);
    EXPECT_EQ(EdgeScroll::step(height - 1, height, row), row);
    EXPECT_LT(EdgeScroll::step(5, height, row), EdgeScroll::step(25, height, row));
    EXPECT_EQ(EdgeScroll::step(31, height, row), 0);
    EXPECT_EQ(EdgeScroll::step(-500, height, row), -row);
    EXPECT_EQ(EdgeScroll::step(10, row, row), 0) << "in a table of one row there is room to drop something";
}

} // namespace
} // namespace tw::test
