#include "Tarnwick/Operations/MarkByMask.h"

#include "Tarnwick/Table/NameMask.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/PaneTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class MarkByMaskTest : public PaneTest {
protected:
    MarkByMaskTest() { show({"a.txt", "b.md", "c.txt"}); }

    ~MarkByMaskTest() override
    {
        dialogs->close();
        loop.drain();
    }

    void begin(Operation operation)
    {
        running =
            loop.start(operation({.operands = pane->operands(), .pane = pane, .panes = {pane}, .dialogs = dialogs}));
        loop.drain();
    }

    Dialogs::Prompt const &question() { return dialogs->prompts.back().question; }

    void answerWith(std::optional<std::string> mask)
    {
        dialogs->prompts.back().answer(std::move(mask));
        loop.drain();
    }

    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    std::optional<Started<void>> running;
};

TEST_F(MarkByMaskTest, itAsksForAMask)
{
    begin(markByMask);
    EXPECT_EQ(question().title, "Select Files");
    EXPECT_EQ(question().message, "Wildcards, separated by spaces or semicolons — *.txt;*.md");
    EXPECT_EQ(question().initial, "*.*");
    begin(unmarkByMask);
    EXPECT_EQ(question().title, "Unselect Files");
}

TEST_F(MarkByMaskTest, whatTheMaskMatchesIsMarkedAndUnmarked)
{
    begin(markByMask);
    answerWith("*.*");
    EXPECT_THAT(marked(), ElementsAre("a.txt", "b.md", "c.txt"));
    begin(unmarkByMask);
    answerWith("*.txt");
    EXPECT_THAT(marked(), ElementsAre("b.md"));
}

TEST_F(MarkByMaskTest, withoutAnAnswerNothingChanges)
{
    begin(markByMask);
    answerWith(std::nullopt);
    EXPECT_TRUE(running->isDone());
    EXPECT_THAT(marked(), IsEmpty());
}

TEST_F(MarkByMaskTest, aMaskThatIsEmptyOrTooLongIsRefused)
{
    begin(markByMask);
    EXPECT_NE(question().objection(""), std::nullopt);
    EXPECT_NE(question().objection(std::string(10'000, '*')), std::nullopt);
    EXPECT_EQ(question().objection(std::string(NameMask::longestBytes, '*')), std::nullopt);
    EXPECT_EQ(question().objection("[a"), std::nullopt);
}

TEST_F(MarkByMaskTest, inAnotherFolderNothingIsMarked)
{
    begin(markByMask);
    pane->navigate("/y");
    answer({"other.txt"});
    answerWith("*");
    EXPECT_THAT(marked(), IsEmpty());
}

TEST_F(MarkByMaskTest, aPaneThatHasBeenClosedIsLeftAlone)
{
    begin(markByMask);
    pane.reset();
    answerWith("*");
    EXPECT_TRUE(running->isDone());
}

} // namespace
} // namespace tw::test
