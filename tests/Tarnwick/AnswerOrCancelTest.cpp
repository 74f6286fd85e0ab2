#include "Tarnwick/Operations/AnswerOrCancel.h"

#include "Tarnwick/Operations/CopyMove.h"
#include "Tarnwick/Operations/Delivery.h"
#include "Tarnwick/Operations/StagingFolder.h"
#include "tests/support/TransferPanesTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using Answer = NameConflict::Answer;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// A copy of /src/a and /src/b to a host that is slow to say what it has.
class AnswerOrCancelTest : public TransferPanesTest {
protected:
    AnswerOrCancelTest() { mark({"a", "b"}); }

    ~AnswerOrCancelTest() override { there->wakeUp(); }

    /// From now on, until it wakes up.
    void silence() { there->silence = std::make_shared<SharedCompletion<Done>>(); }

    /// At the first question with this name in it.
    void silenceAt(std::string const &name)
    {
        there->before = [this, name](std::string const &request) {
            if (request.starts_with("factsAbout") && request.contains(name))
                silence();
        };
    }

    void wakeUp()
    {
        there->before = [](auto const &) {};
        there->wakeUp();
        loop.drain();
    }

    void copy(std::optional<std::string> path = {})
    {
        begin(copyOperands(context()));
        answerPrompt(std::move(path));
    }

    void paste()
    {
        auto pasted = context();
        pasted.operands = target.pane->operands();
        pasted.pane = target.pane;
        begin(deliver(std::move(pasted), {.drag = {"local", "/src", {"a", "b"}, false}}));
    }

    void pass(std::chrono::milliseconds time)
    {
        clock->advance(time);
        loop.drain();
    }

    FakeDialogs::Work const &shown() const { return *dialogs->works.at(0); }

    void cancel()
    {
        shown().cancel();
        loop.drain();
    }

    void expectCancelled(Side const &side)
    {
        EXPECT_TRUE(operation->isDone());
        EXPECT_FALSE(shown().isUnderWay);
        EXPECT_EQ(side.display.status, "⚠︎ copy 2 items cancelled");
        EXPECT_FALSE(claims->isAnyAt(there->identifier()));
        wakeUp();
        EXPECT_THAT(dialogs->works, SizeIs(1));
        EXPECT_THAT(dialogs->errors, IsEmpty());
        EXPECT_THAT(transfer->copies, IsEmpty());
        EXPECT_THAT(requestsOf(*there, "makeDirectory"), IsEmpty());
    }
};

TEST_F(AnswerOrCancelTest, aQuickQuestionShowsNothing)
{
    silence();
    copy();
    pass(unseenQuestion / 2);
    wakeUp();
    ASSERT_THAT(dialogs->works, SizeIs(1));
    EXPECT_EQ(shown().title, "Copy 2 items…");
    EXPECT_TRUE(there->has("/dst/b"));
}

TEST_F(AnswerOrCancelTest, oneThatTakesLongIsShownUntilItsAnswer)
{
    there->file("/dst/a", "old");
    silence();
    copy();
    pass(unseenQuestion);
    ASSERT_THAT(dialogs->works, SizeIs(1));
    EXPECT_EQ(shown().title, "Copy 2 items: asking what is there…");
    EXPECT_TRUE(shown().isUnderWay);
    wakeUp();
    EXPECT_FALSE(shown().isUnderWay);
    EXPECT_THAT(dialogs->conflicts, SizeIs(1));
}

TEST_F(AnswerOrCancelTest, aCancelEndsItAndNothingIsWritten)
{
    silence();
    copy();
    pass(unseenQuestion);
    cancel();
    expectCancelled(source);
}

TEST_F(AnswerOrCancelTest, theQuestionAfterTheSheetCanBeCancelledToo)
{
    there->file("/dst/a", "old");
    copy();
    pass(2 * unseenQuestion);
    EXPECT_THAT(dialogs->works, IsEmpty()) << "the sheet stands for as long as the user likes";
    silence();
    resolve({Answer::replace});
    pass(unseenQuestion);
    cancel();
    expectCancelled(source);
}

TEST_F(AnswerOrCancelTest, soCanTheOneForFreeNames)
{
    there->file("/dst/a", "old");
    silenceAt("a(2)");
    copy();
    resolve({Answer::keepBoth});
    pass(unseenQuestion);
    cancel();
    expectCancelled(source);
}

TEST_F(AnswerOrCancelTest, soCanThatOfAPaste)
{
    silence();
    paste();
    pass(unseenQuestion);
    cancel();
    expectCancelled(target);
}

TEST_F(AnswerOrCancelTest, theOfferToMakeAFolderIsNotCovered)
{
    copy("/new");
    pass(2 * unseenQuestion);
    EXPECT_THAT(dialogs->works, IsEmpty());
    silence();
    confirm(Dialogs::Answer::ok);
    wakeUp();
    ASSERT_THAT(dialogs->works, SizeIs(1));
    EXPECT_EQ(shown().title, "Copy 2 items…");
}

TEST_F(AnswerOrCancelTest, aWindowThatGoesEndsItWithoutAWord)
{
    silence();
    copy();
    pass(unseenQuestion);
    auto const before = source.display.status;
    operation->stop();
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_FALSE(shown().isUnderWay);
    EXPECT_EQ(source.display.status, before);
}

/// Takes no stop.
Task<void> answerOf(std::shared_ptr<Completion<Done>> place)
{
    co_await Completion<Done>::wait(place).withStop({});
}

TEST_F(AnswerOrCancelTest, aPlaceThatHearsNoCancelDoesNotHoldIt)
{
    auto const place = std::make_shared<Completion<Done>>();
    begin(answerOrCancel(context(), "Copy 2 items", answerOf(place)));
    pass(unseenQuestion);
    cancel();
    EXPECT_TRUE(operation->isDone());
    place->succeed({});
    loop.drain();
}

/// The target shows what the source has, so a folder is made there to see whether they are one.
class OneFolderTest : public AnswerOrCancelTest {
protected:
    OneFolderTest()
    {
        there->nodes = here->nodes;
        there->making = std::make_shared<Completion<Done>>();
    }
};

TEST_F(OneFolderTest, nothingIsWrittenAfterACancelThatComesWithTheAnswers)
{
    silence();
    copy("/src");
    pass(unseenQuestion);
    there->wakeUp();
    cancel();
    expectCancelled(source);
}

TEST_F(OneFolderTest, aCancelDoesNotWaitForTheFolderWhichIsNamedIfItMayStay)
{
    copy("/src");
    pass(unseenQuestion);
    cancel();
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(dialogs->errors, IsEmpty());
    pass(StagingFolder::patience);
    EXPECT_THAT(lastError(), HasSubstr("The folder /src/.tw-paste-"));
    EXPECT_TRUE(dialogs->errors.back().end->succeed({})) << "it stands until the user has seen it";
    there->wakeUp();
    loop.drain();
    EXPECT_THAT(there->below("/src"), ElementsAre("/src/a", "/src/b")) << "it goes with the answer";
}

} // namespace
} // namespace tw::test
