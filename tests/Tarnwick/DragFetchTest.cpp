#include "Tarnwick/Dragging/DragFetch.h"

#include "tests/support/TransferPanesTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Two files of the host are dragged to another program.
class DragFetchTest : public TransferPanesTest {
protected:
    using End = DragFetch::End;

    DragFetchTest()
    {
        here->folder("/scratch");
        there->file("/dst/x", "xxxx");
        there->file("/dst/y", "yy");
    }

    void begin(DragFetch::Limits limits = {})
    {
        auto dragged = context();
        dragged.operands = target.pane->operands();
        dragged.operands.names = {"x", "y"};
        dragged.pane = target.pane;
        fetch = std::make_shared<DragFetch>(std::move(dragged), loop.context(), clock, limits);
        fetch->prepare([]() -> Task<std::string> { co_return "/scratch"; });
        loop.drain();
        there->requests.clear();
    }

    void drop()
    {
        fetch->start([this](End end) { ends.push_back(end); });
        loop.drain();
    }

    void finish()
    {
        fetch->finish();
        loop.drain();
    }

    std::shared_ptr<DragFetch> fetch;
    std::vector<End> ends;
};

TEST_F(DragFetchTest, whileTheDragGoesOnThePathsAreKnownAndNothingIsFetched)
{
    begin();
    EXPECT_THAT(fetch->paths(), ElementsAre("/scratch/x", "/scratch/y"));
    EXPECT_THAT(there->requests, IsEmpty());
    EXPECT_THAT(transfer->copies, IsEmpty());
    finish();
    EXPECT_THAT(fetch->paths(), IsEmpty()) << "a drag that is over offers nothing";
    EXPECT_FALSE(here->has("/scratch"));
}

TEST_F(DragFetchTest, afterTheDropTheFilesComeAndStay)
{
    begin();
    drop();
    EXPECT_THAT(ends, ElementsAre(End::arrived));
    EXPECT_EQ(here->content("/scratch/x"), "xxxx");
    EXPECT_THAT(dialogs->works, SizeIs(1));
    finish();
    EXPECT_THAT(fetch->paths(), ElementsAre("/scratch/x", "/scratch/y")) << "the other program reads them now";
    EXPECT_TRUE(here->has("/scratch/y"));
}

TEST_F(DragFetchTest, whatIsLargeIsAskedAbout)
{
    begin({.askAbove = 5});
    drop();
    EXPECT_THAT(transfer->copies, IsEmpty());
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(ends, ElementsAre(End::arrived));
}

TEST_F(DragFetchTest, whatIsNotLargerIsNotAskedAbout)
{
    begin({.askAbove = 6});
    drop();
    EXPECT_THAT(dialogs->confirmations, IsEmpty());
    EXPECT_THAT(ends, ElementsAre(End::arrived));
}

TEST_F(DragFetchTest, aNoEndsTheDrag)
{
    begin({.askAbove = 5});
    drop();
    confirm(Dialogs::Answer::cancel);
    EXPECT_THAT(ends, ElementsAre(End::missed));
    finish();
    EXPECT_THAT(transfer->copies, IsEmpty());
    EXPECT_FALSE(here->has("/scratch"));
}

TEST_F(DragFetchTest, aDragThatIsCancelledDuringTheQuestionFetchesNothing)
{
    begin({.askAbove = 5});
    drop();
    finish();
    EXPECT_THAT(ends, IsEmpty());
    EXPECT_THAT(transfer->copies, IsEmpty());
    EXPECT_FALSE(here->has("/scratch"));
}

TEST_F(DragFetchTest, aDragThatIsCancelledDuringTheFetchLeavesNothing)
{
    transfer->pausesBefore = "y";
    begin();
    drop();
    EXPECT_TRUE(here->has("/scratch/x"));
    finish();
    EXPECT_EQ(transfer->cancels, 1);
    EXPECT_THAT(ends, IsEmpty());
    EXPECT_FALSE(here->has("/scratch"));
}

TEST_F(DragFetchTest, aFetchThatFailsEndsTheDragAndSaysWhy)
{
    transfer->before = [](auto const &) { throw FileOperationError::Failed("read from remote", "x", "no way"); };
    begin();
    drop();
    EXPECT_THAT(ends, ElementsAre(End::missed));
    EXPECT_THAT(lastError(), HasSubstr("no way"));
    finish();
    EXPECT_FALSE(here->has("/scratch"));
}

TEST_F(DragFetchTest, aHostThatTakesTooLongEndsTheDrag)
{
    transfer->pausesBefore = "y";
    begin();
    drop();
    clock->advance(180s);
    loop.drain();
    EXPECT_THAT(ends, ElementsAre(End::missed));
    EXPECT_THAT(target.display.status, HasSubstr("nothing was dropped: the files were not here after 180 seconds"));
    finish();
    EXPECT_FALSE(here->has("/scratch"));
}

} // namespace
} // namespace tw::test
