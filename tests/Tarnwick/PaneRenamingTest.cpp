#include "tests/support/PaneTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using std::chrono_literals::operator""ms;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Editing a name in its row, on the files "a.txt", "b.md" and "c".
class PaneRenamingTest : public PaneTest {
protected:
    PaneRenamingTest()
    {
        show({"a.txt", "b.md", "c"});
        pane->callbacks.onRenameRequested = [this](std::string const &from, std::string const &to) {
            requests.push_back(from + " -> " + to);
        };
    }

    void beginWith(std::string const &typed)
    {
        pane->beginRename();
        ASSERT_TRUE(display.nameField);
        display.nameField->text = typed;
    }

    using NameEnd = PaneController::NameEnd;

    std::vector<std::string> requests;
};

TEST_F(PaneRenamingTest, theFieldStandsAtTheCursorsRowWithTheBaseSelected)
{
    pane->beginRename();
    ASSERT_TRUE(display.nameField);
    EXPECT_EQ(display.nameField->row, 1);
    EXPECT_EQ(display.nameField->text, "a.txt");
    EXPECT_EQ(display.nameField->base, "a");
    EXPECT_TRUE(pane->isRenaming());
}

TEST_F(PaneRenamingTest, theParentRowHasNoNameToEdit)
{
    press(Key::home);
    pane->beginRename();
    EXPECT_FALSE(display.nameField);
    EXPECT_EQ(display.beeps, 1);
}

TEST_F(PaneRenamingTest, returnAsksForTheNewName)
{
    beginWith("b.txt");
    pane->confirmName();
    EXPECT_THAT(requests, ElementsAre("a.txt -> b.txt"));
    EXPECT_FALSE(display.nameField);
    EXPECT_FALSE(pane->isRenaming());
}

TEST_F(PaneRenamingTest, escapeTheSameNameAndNoNameAskForNothing)
{
    beginWith("b.txt");
    pane->endRename(NameEnd::cancelled);
    for (auto const *const typed : {"a.txt", "", "  "}) {
        beginWith(typed);
        pane->confirmName();
    }
    EXPECT_THAT(requests, IsEmpty());
    EXPECT_FALSE(display.nameField);
}

TEST_F(PaneRenamingTest, afterReturnANameThatCannotBeStaysToBeCorrected)
{
    for (auto const &typed : {std::string("a/b"), std::string(".."), std::string(300, 'x')}) {
        beginWith(typed);
        pane->confirmName();
        EXPECT_TRUE(display.nameField) << typed;
        EXPECT_THAT(display.status, HasSubstr("⚠︎"));
        pane->endRename(NameEnd::cancelled);
    }
    EXPECT_THAT(requests, IsEmpty());
    EXPECT_EQ(display.beeps, 3);
}

TEST_F(PaneRenamingTest, whatEndsTheEditOtherwiseCommitsIt)
{
    beginWith("1");
    pane->endRename(NameEnd::committed);
    beginWith("2");
    pane->toggleHidden();
    beginWith("3");
    pane->toggleSort(SortKey::size);
    beginWith("4");
    pane->detach(display);
    EXPECT_THAT(requests, ElementsAre("a.txt -> 1", "a.txt -> 2", "a.txt -> 3", "a.txt -> 4"));
}

TEST_F(PaneRenamingTest, aNavigationCommitsItInTheFolderThatItIsIn)
{
    std::string folder;
    pane->callbacks.onRenameRequested = [&](std::string const & /*from*/, std::string const & /*to*/) {
        folder = pane->operands().path;
    };
    beginWith("new");
    pane->navigate("/y");
    answer({"other"});
    EXPECT_EQ(folder, "/x");
    EXPECT_FALSE(pane->isRenaming());
}

TEST_F(PaneRenamingTest, aRefreshByItsKeyWaitsToo)
{
    beginWith("new");
    pane->refresh();
    answer({"a.txt", "z"});
    EXPECT_TRUE(display.nameField);
    pane->confirmName();
    EXPECT_THAT(requests, ElementsAre("a.txt -> new"));
    EXPECT_THAT(pane->model().visibleNames(), ElementsAre("a.txt", "z"));
}

TEST_F(PaneRenamingTest, aSecondBeginChangesNothing)
{
    beginWith("new");
    pane->beginRename();
    EXPECT_EQ(display.nameField->text, "new");
}

TEST_F(PaneRenamingTest, aSearchEndsWhereAnEditBegins)
{
    type("b");
    pane->beginRename();
    EXPECT_FALSE(pane->isSearching());
    EXPECT_EQ(display.nameField->text, "b.md");
}

TEST_F(PaneRenamingTest, aSecondClickOnTheNameOpensTheFieldAfterAWhile)
{
    pane->scheduleRename(1, 400ms);
    pass(399ms);
    EXPECT_FALSE(pane->isRenaming());
    pass(1ms);
    EXPECT_TRUE(pane->isRenaming());
}

TEST_F(PaneRenamingTest, anythingElseCallsItOff)
{
    pane->scheduleRename(1, 400ms);
    press(Key::insert);
    pass(400ms);
    pane->scheduleRename(2, 400ms);
    pane->rowClicked(3);
    pass(400ms);
    pane->scheduleRename(3, 400ms);
    pane->rowDoubleClicked(0);
    pass(400ms);
    pane->scheduleRename(1, 400ms); // not the cursor's
    pass(400ms);
    EXPECT_FALSE(pane->isRenaming());
}

} // namespace
} // namespace tw::test
