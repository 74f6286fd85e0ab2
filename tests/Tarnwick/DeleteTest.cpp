#include "Tarnwick/Operations/Delete.h"

#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Transfer/HostWork.h"
#include "Tarnwick/Operations/ClaimedNames.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/PaneTest.h"
#include "tests/support/TransferPanesTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class DeleteTest : public PaneTest {
protected:
    DeleteTest() { show({"a", "b", "c", "d"}); }

    ~DeleteTest() override
    {
        dialogs->close();
        loop.drain();
    }

    /// Marks all of so many names.
    void showMany(int count)
    {
        std::vector<std::string> names;
        for (int number = 0; number < count; ++number)
            names.push_back("name " + std::to_string(1000 + number));
        pane->refresh();
        answer(names);
        pane->markAll(PaneModel::Marks::insert);
    }

    void begin()
    {
        OperationContext context{
            .operands = pane->operands(), .pane = pane, .panes = {pane}, .dialogs = dialogs, .claims = claims};
        operation = loop.start(deleteOperands(std::move(context)));
        loop.drain();
    }

    void agree()
    {
        dialogs->confirmations.back().answer(Dialogs::Answer::ok);
        loop.drain();
    }

    void endWrite()
    {
        provider->writes.back().succeed();
        loop.drain();
    }

    void failWrite(std::string const &path)
    {
        provider->writes.back().fail(
            std::make_exception_ptr(FileOperationError::Failed("delete", path, "Permission denied")));
        loop.drain();
    }

    Dialogs::Confirmation const &question() const { return dialogs->confirmations.back().question; }

    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    std::shared_ptr<ClaimedNames> claims = std::make_shared<ClaimedNames>();
    std::optional<Started<void>> operation;
};

TEST_F(DeleteTest, whereThereIsATrashItAsksToMoveThere)
{
    begin();
    EXPECT_EQ(question().title, "Move 1 item to the Trash?");
    EXPECT_EQ(question().message, "/x:\na");
    EXPECT_EQ(question().okTitle, "Move to Trash");
    EXPECT_EQ(question().danger, Dialogs::Danger::harmless);
}

TEST_F(DeleteTest, onAHostItSaysThatNothingBringsTheFilesBack)
{
    provider->isReversible = false;
    press(Key::insert);
    press(Key::insert);
    begin();
    EXPECT_EQ(question().title, "Delete 2 items on web1?");
    EXPECT_EQ(question().message, "There is no Trash on a remote host. This deletes permanently and cannot be undone."
                                  "\n\n/x:\na\nb");
    EXPECT_EQ(question().okTitle, "Delete Permanently");
    EXPECT_EQ(question().danger, Dialogs::Danger::destructive);
}

TEST_F(DeleteTest, nothingIsDeletedUnasked)
{
    begin();
    dialogs->confirmations.back().answer(Dialogs::Answer::cancel);
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(provider->writes, IsEmpty());
}

TEST_F(DeleteTest, whatIsBeingDeletedIsClaimedUntilItHasGone)
{
    std::vector<ClaimedNames::Names> const wanted{
        {.place = provider->identifier(), .folder = "/x/a", .names = {"deep"}}};
    begin();
    EXPECT_FALSE(claims->clash(wanted)) << "a question that stands holds nobody up";
    agree();
    EXPECT_EQ(claims->clash(wanted), (ClaimedNames::Clash{.path = "/x/a", .use = ClaimedNames::Use::deleted}));
    failWrite("/x/a");
    ASSERT_THAT(dialogs->errors, SizeIs(1));
    EXPECT_FALSE(claims->clash(wanted)) << "nor does a message";
    answer({"a", "b", "c", "d"});
}

TEST_F(DeleteTest, theCursorGoesToTheNameBelowTheLastThatHasGone)
{
    press(Key::insert);
    press(Key::down);
    press(Key::insert);
    press(Key::home);
    begin();
    agree();
    ASSERT_THAT(provider->writes, SizeIs(1));
    EXPECT_EQ(provider->writes.front().what, "remove /x/a /x/c");
    endWrite();
    answer({"b", "d"});
    EXPECT_EQ(cursorName(), "d");
    EXPECT_THAT(marked(), IsEmpty());
    EXPECT_TRUE(operation->isDone());
}

TEST_F(DeleteTest, afterAFailureTheRestStaysMarked)
{
    press(Key::insert);
    press(Key::insert);
    begin();
    agree();
    failWrite("/x/b");
    ASSERT_THAT(dialogs->errors, SizeIs(1));
    EXPECT_EQ(dialogs->errors.front().question,
              "delete failed on /x/b: Permission denied\n\nUntouched (2 items):\na\nb");
    answer({"b", "c", "d"});
    EXPECT_THAT(marked(), ElementsAre("b"));
    EXPECT_EQ(cursorName(), "c");
}

TEST_F(DeleteTest, whatTheTrashRefusesIsDeletedForGoodIfTheUserWantsThat)
{
    press(Key::insert);
    press(Key::insert);
    begin();
    agree();
    provider->writes.back().fail(std::make_exception_ptr(FileOperationError::NoTrash("/x/b", "no Trash here")));
    loop.drain();
    answer({"b", "c", "d"});
    ASSERT_THAT(dialogs->confirmations, SizeIs(2));
    EXPECT_EQ(question().title, "Delete 2 items permanently?");
    EXPECT_THAT(question().message, ::testing::HasSubstr("The Trash does not take /x/b: no Trash here"));
    EXPECT_EQ(question().okTitle, "Delete Permanently");
    EXPECT_EQ(question().danger, Dialogs::Danger::destructive);
    EXPECT_THAT(provider->writes, SizeIs(1)) << "not before the answer";
    agree();
    EXPECT_EQ(provider->writes.back().what, "removePermanently /x/a /x/b");
    endWrite();
    answer({"c", "d"});
    EXPECT_TRUE(operation->isDone());
}

TEST_F(DeleteTest, whatTheTrashRefusesStaysIfTheUserDoesNotWantThat)
{
    begin();
    agree();
    provider->writes.back().fail(std::make_exception_ptr(FileOperationError::NoTrash("/x/a", "no Trash here")));
    loop.drain();
    dialogs->confirmations.back().answer(Dialogs::Answer::cancel);
    loop.drain();
    EXPECT_THAT(provider->writes, SizeIs(1));
    EXPECT_TRUE(operation->isDone());
    answer({"a", "b", "c", "d"});
}

TEST_F(DeleteTest, manyNamesAreDeletedInRequestsAndProgressIsShown)
{
    showMany(250);
    begin();
    agree();
    ASSERT_THAT(dialogs->works, SizeIs(1));
    auto const work = dialogs->works.front();
    EXPECT_EQ(work->title, "Move 250 items to the Trash…");
    endWrite();
    ASSERT_THAT(provider->writes, SizeIs(2));
    ASSERT_THAT(work->states, SizeIs(2));
    EXPECT_EQ(work->states.back().files, 100);
    EXPECT_EQ(work->states.back().totalFiles, 250);
    endWrite();
    EXPECT_FALSE(work->isUnderWay);
    EXPECT_EQ(work->conclusion, "Moved 250 items to the Trash.");
    answer({});
    EXPECT_TRUE(operation->isDone());
}

TEST_F(DeleteTest, aCancelSaysWhatWasDeletedAndTheWordsStay)
{
    provider->isReversible = false;
    showMany(10'250);
    begin();
    agree();
    endWrite();
    dialogs->works.front()->cancel();
    loop.drain();
    answer({"a", "b"});
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(display.status, "⚠︎ delete 10250 items cancelled: 10,000 of 10,250 items deleted");
    EXPECT_EQ(dialogs->works.front()->conclusion, "delete 10250 items cancelled: 10,000 of 10,250 items deleted");
    EXPECT_THAT(dialogs->errors, IsEmpty());
    EXPECT_THAT(provider->writes, SizeIs(2));
}

TEST_F(DeleteTest, aCancelThatAHostDoesNotFollowSaysSo)
{
    provider->isReversible = false;
    provider->followsStops = false;
    begin();
    agree();
    dialogs->works.front()->cancel();
    provider->writes.back().fail(std::make_exception_ptr(HostWork::MayGoOn()));
    loop.drain();
    EXPECT_EQ(display.status, "⚠︎ delete 1 item cancelled: the host may go on, so it is not known what is deleted");
}

TEST_F(DeleteTest, thereIsNothingToDeleteOnTheRowOfTheFolderAbove)
{
    press(Key::home);
    begin();
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(display.beeps, 1);
    EXPECT_THAT(dialogs->confirmations, IsEmpty());
}

TEST_F(DeleteTest, whatThePaneDoesDuringTheQuestionChangesNothing)
{
    begin();
    pane->navigate("/y");
    answer({"other"});
    agree();
    EXPECT_EQ(provider->writes.front().what, "remove /x/a");
    endWrite();
    EXPECT_EQ(pane->pathOnShow(), "/y");
    EXPECT_THAT(provider->waiting, IsEmpty());
}

TEST_F(DeleteTest, anotherPaneOnTheFolderKeepsItsCursor)
{
    RecordingDisplay otherDisplay;
    auto const other =
        PaneController::create({.mainContext = loop.context(), .clock = clock, .defaults = defaults}, browser, "web1");
    other->attach(otherDisplay);
    other->navigate("/x", "d");
    loop.drain();
    ASSERT_EQ(other->cursorName(), "d");
    OperationContext context{
        .operands = pane->operands(), .pane = pane, .panes = {pane, other}, .dialogs = dialogs, .claims = claims};
    operation = loop.start(deleteOperands(std::move(context)));
    loop.drain();
    agree();
    endWrite();
    answer({"b", "c", "d"});
    EXPECT_EQ(cursorName(), "b");
    EXPECT_EQ(other->cursorName(), "d");
    EXPECT_EQ(other->model().visibleNames(), (std::vector<std::string>{"b", "c", "d"}));
    other->detach(otherDisplay);
}

/// The folders f and g, each with an entry, and the file a, in a pane on a place without a Trash.
class FailedDeleteTest : public TransferPanesTest {
protected:
    void deleteIn(std::string const &folder)
    {
        auto &place = folder == "/src" ? *here : *there;
        for (auto const *const name : {"/f", "/g"}) {
            place.folder(folder + name);
            place.file(folder + name + "/in", "");
        }
        place.file(folder + "/a", "aaaa");
        place.isReversible = false;
        mark({"f", "g", "a"});
        begin(deleteOperands(context()));
        confirm(Dialogs::Answer::ok);
    }
};

TEST_F(FailedDeleteTest, aFailureSaysWhatIsDeletedWhatMayBeInPartAndWhatIsUntouched)
{
    here->before = [this](std::string const &request) {
        if (!request.starts_with("remove"))
            return;
        std::erase_if(here->nodes, [](auto const &node) { return node.first.starts_with("/src/f"); });
        throw FileOperationError::Failed("delete", "/src/g/in", "Permission denied");
    };
    deleteIn("/src");
    EXPECT_EQ(lastError(), "delete failed on /src/g/in: Permission denied\n\nDeleted (1 item):\nf"
                           "\n\nPerhaps deleted in part (1 item):\ng\n\nUntouched (1 item):\na");
    EXPECT_EQ(dialogs->wordsOfErrors.back(), "");
}

TEST_F(FailedDeleteTest, aDiskThatDiesDoesNotHoldACancel)
{
    here->before = [this](std::string const &request) {
        if (request.starts_with("remove"))
            here->silence = std::make_shared<SharedCompletion<Done>>();
    };
    deleteIn("/src");
    dialogs->works.front()->cancel();
    letTimePass();
    EXPECT_EQ(source.display.status, "⚠︎ delete 3 items cancelled: it is not known what is deleted");
}

TEST_F(FailedDeleteTest, aHostMayHaveDeletedPartsOfEveryFolderThatIsLeft)
{
    show(source, thereBrowser, "web1", "/dst");
    there->before = [](std::string const &request) {
        if (request.starts_with("remove"))
            throw FileOperationError::Failed("delete", "/dst/f", "rm: /dst/f/in: no\nrm: /dst/g/in: no");
    };
    deleteIn("/dst");
    EXPECT_THAT(lastError(), ::testing::HasSubstr("Perhaps deleted in part (2 items):\nf\ng"));
    EXPECT_THAT(lastError(), ::testing::HasSubstr("Untouched (1 item):\na"));
    EXPECT_EQ(dialogs->wordsOfErrors.back(), "rm: /dst/f/in: no\nrm: /dst/g/in: no");
}

} // namespace
} // namespace tw::test
