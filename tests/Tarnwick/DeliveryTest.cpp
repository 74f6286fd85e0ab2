#include "Tarnwick/Operations/Delivery.h"

#include "tests/support/TransferPanesTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Files of /src are delivered to the pane on /dst of the host, which has the keyboard.
class DeliveryTest : public TransferPanesTest {
protected:
    /// What `into` gets.
    void deliverTo(Side &into, Delivery what)
    {
        auto delivered = context();
        delivered.operands = into.pane->operands();
        delivered.operands.names.clear();
        delivered.pane = into.pane;
        begin(deliver(std::move(delivered), std::move(what)));
    }

    Delivery files(std::vector<std::string> names, TransferKind kind = TransferKind::copy)
    {
        return {.drag = {"local", "/src", std::move(names), kind == TransferKind::move},
                .onMoved = [this] { ++cleared; }};
    }

    int cleared = 0;
};

TEST_F(DeliveryTest, whatIsPastedArrivesUnderTheCursor)
{
    deliverTo(target, files({"a", "b"}));
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(there->content("/dst/b"), "bb");
    EXPECT_EQ(target.pane->cursorName(), "a");
    EXPECT_EQ(cleared, 0) << "a copy can be pasted again";
    EXPECT_THAT(dialogs->works, SizeIs(1));
}

TEST_F(DeliveryTest, nothingHappensWithoutNames)
{
    deliverTo(target, files({}));
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(there->requests, IsEmpty());
}

TEST_F(DeliveryTest, aNameThatIsTakenIsNoQuestion)
{
    there->file("/dst/a", "old");
    deliverTo(target, files({"a", "b"}));
    EXPECT_THAT(dialogs->conflicts, IsEmpty());
    EXPECT_EQ(there->content("/dst/a"), "old");
    EXPECT_EQ(there->content("/dst/a(2)"), "aaaa");
    EXPECT_TRUE(there->has("/dst/b"));
    EXPECT_EQ(target.pane->cursorName(), "a(2)");
}

TEST_F(DeliveryTest, whatIsPastedIntoItsOwnFolderIsADuplicate)
{
    deliverTo(source, files({"a"}));
    EXPECT_EQ(here->content("/src/a(2)"), "aaaa");
    EXPECT_EQ(here->content("/src/a"), "aaaa");
    EXPECT_THAT(here->below("/src"), ElementsAre("/src/a", "/src/a(2)", "/src/b"));
}

TEST_F(DeliveryTest, whatIsDroppedIntoItsOwnFolderIsThereAlready)
{
    auto dropped = files({"a"});
    dropped.sameFolder = SameFolder::refuse;
    deliverTo(source, std::move(dropped));
    EXPECT_EQ(source.display.status, "already here");
    EXPECT_THAT(here->requests, IsEmpty());
}

TEST_F(DeliveryTest, whatWasCutGoesFromItsFolderAndIsNotPastedTwice)
{
    deliverTo(target, files({"a", "b"}, TransferKind::move));
    EXPECT_THAT(here->below("/src"), IsEmpty());
    EXPECT_EQ(cleared, 1);
    EXPECT_THAT(source.pane->model().visibleNames(), IsEmpty());
}

TEST_F(DeliveryTest, aFailedMoveCanBePastedAgain)
{
    transfer->before = [](auto const &) { throw FileOperationError::Failed("write to remote", "a", "no space"); };
    deliverTo(target, files({"a"}, TransferKind::move));
    EXPECT_THAT(lastError(), HasSubstr("no space"));
    EXPECT_TRUE(here->has("/src/a"));
    EXPECT_EQ(cleared, 0);
}

TEST_F(DeliveryTest, aMoveWithinOnePlaceRenamesToNamesThatAreFree)
{
    here->folder("/dst");
    here->file("/dst/a", "old");
    show(target, hereBrowser, "local", "/dst");
    deliverTo(target, files({"a"}, TransferKind::move));
    EXPECT_THAT(requestsOf(*here, "move"), ElementsAre("move /src/a /dst/a(2)"));
    EXPECT_THAT(transfer->copies, IsEmpty());
    EXPECT_EQ(cleared, 1);
}

TEST_F(DeliveryTest, whatAnotherTransferHasStillToWriteIsNotWritten)
{
    transfer->pausesBefore = "b";
    deliverTo(target, files({"a", "b"}));
    deliverTo(target, files({"b"}, TransferKind::move));
    EXPECT_THAT(lastError(), HasSubstr("move failed on /dst/b: another operation is writing it"));
    EXPECT_THAT(transfer->copies, SizeIs(1));
    EXPECT_EQ(cleared, 0) << "it can be pasted when the other one has ended";
    transfer->pause->succeed({});
    loop.drain();
}

TEST_F(DeliveryTest, twoDuplicatesAtOnceGetTwoNames)
{
    auto const first = transfer;
    first->pausesBefore = "a";
    deliverTo(source, files({"a"}));
    transfer = std::make_shared<FakeTransfer>(here);
    deliverTo(source, files({"a"}));
    EXPECT_TRUE(here->has("/src/a(3)"));
    EXPECT_FALSE(here->has("/src/a(2)"));
    first->pause->succeed({});
    loop.drain();
    EXPECT_TRUE(here->has("/src/a(2)"));
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(DeliveryTest, aQuestionThatFailsStopsIt)
{
    there->before = [](std::string const &request) {
        if (request.starts_with("factsAbout"))
            throw FileOperationError::Failed("look", "/dst", "no way");
    };
    deliverTo(target, files({"a"}));
    EXPECT_EQ(lastError(), "look failed on /dst: no way");
    EXPECT_THAT(transfer->copies, IsEmpty());
}

TEST_F(DeliveryTest, aConnectionThatNoPaneHasIsMade)
{
    auto const other = std::make_shared<FakeHostPlace>("web2");
    auto const browser = browserOf(other);
    other->folder("/far");
    other->file("/far/x", "xx");
    deliverTo(target, {.drag = {"web2", "/far", {"x"}, false}});
    ASSERT_THAT(connections.waiting, SizeIs(1));
    connections.waiting.front().answer->succeed(browser);
    loop.drain();
    EXPECT_EQ(there->content("/dst/x"), "xx");
    loop.start(browser->shutdown());
    loop.drain();
}

TEST_F(DeliveryTest, filesOfAnotherProgramComeFromAllTheirFolders)
{
    here->folder("/more");
    here->file("/more/c", "cc");
    auto delivered = context();
    delivered.operands = target.pane->operands();
    delivered.pane = target.pane;
    begin(deliverPaths(std::move(delivered), {"/src/a", "/more/c", "/src/b", "/"}, TransferKind::copy));
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/a", "/dst/b", "/dst/c"));
    EXPECT_THAT(transfer->copies, ElementsAre("/src -> /dst", "/more -> /dst"));
}

} // namespace
} // namespace tw::test
