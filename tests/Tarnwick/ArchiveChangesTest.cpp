#include "TWCore/Archives/ArchiveTooLarge.h"
#include "Tarnwick/Operations/CopyMove.h"
#include "Tarnwick/Operations/Delete.h"
#include "Tarnwick/Operations/Delivery.h"
#include "tests/support/FakeArchives.h"
#include "tests/support/Listings.h"
#include "tests/support/ScriptedProvider.h"
#include "tests/support/TransferPanesTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// The pane of the key press is in /src/box.zip of this machine, in its folder /docs with the files a and b.
class ArchiveChangesTest : public TransferPanesTest {
protected:
    ArchiveChangesTest()
    {
        here->file("/src/box.zip", "zip");
        there->file("/dst/box.zip", "zip");
        enter(source, hereBrowser, "local", "/src");
    }

    ~ArchiveChangesTest() override
    {
        if (archives->end)
            archives->cancel();
        dialogs->close();
        loop.drain();
    }

    void enter(Side &side, std::shared_ptr<Browser> const &browser, std::string const &connection,
               std::string const &folder)
    {
        side.pane->detach(side.display);
        PaneController::Collaborators const with{.mainContext = loop.context(),
                                                 .clock = clock,
                                                 .defaults = defaults,
                                                 .openArchive = [this](ArchiveFile const &) { return inside(); }};
        side.pane = PaneController::create(with, browser, connection);
        side.pane->attach(side.display);
        side.pane->navigate(folder);
        loop.drain();
        side.pane->refresh(); // the archive is new there
        loop.drain();
        side.pane->moveCursorTo(side.pane->model().rowForName("box.zip").value());
        side.pane->openSelection();
        loop.drain();
        side.pane->navigate("/docs", "a");
        loop.drain();
        EXPECT_EQ(side.pane->pathOnShow(), "/docs");
    }

    std::shared_ptr<Browser> inside()
    {
        auto const members = std::make_shared<ScriptedProvider>();
        members->usefulDepth = 1;
        insides.push_back(members);
        members->answersAtOnce = [this](std::string const &path) -> Listings {
            ++listed;
            return {{path, listing(path, path == "/" ? std::vector{directory("docs")} : filesInside, clock->now())}};
        };
        return std::make_shared<Browser>(members, Browser::Collaborators{Strand(loop.context()), clock, nullptr},
                                         Browser::Config{});
    }

    OperationContext context()
    {
        auto made = TransferPanesTest::context();
        made.makeArchives = [this] { return archives; };
        return made;
    }

    void finishWork()
    {
        archives->end->succeed({});
        loop.drain();
    }

    std::shared_ptr<FakeArchives> archives = std::make_shared<FakeArchives>();
    std::vector<ListedEntry> filesInside{file("a"), file("b")};
    std::vector<std::shared_ptr<ScriptedProvider>> insides; ///< of the archives that were entered
    int listed = 0;                                         ///< how often a folder of an archive was read
};

TEST_F(ArchiveChangesTest, copyTakesTheOperandsOutOfTheArchive)
{
    begin(copyOperands(context()));
    EXPECT_THAT(dialogs->prompts, IsEmpty());
    EXPECT_THAT(archives->calls, ElementsAre("extract docs/a /src/box.zip web1:/dst"));
    EXPECT_EQ(dialogs->works.front()->title, "Copy 1 item…");
    finishWork();
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(dialogs->works.front()->conclusion, "Copied 1 item to web1:/dst.");
}

TEST_F(ArchiveChangesTest, whatIsThereIsReplacedOnlyIfTheUserSaysSo)
{
    there->file("/dst/a", "old");
    begin(copyOperands(context()));
    EXPECT_EQ(dialogs->confirmations.back().question.title, "Replace a?");
    EXPECT_EQ(dialogs->confirmations.back().question.danger, Dialogs::Danger::destructive);
    confirm(Dialogs::Answer::cancel);
    EXPECT_THAT(archives->calls, IsEmpty());
    begin(copyOperands(context()));
    confirm(Dialogs::Answer::ok);
    EXPECT_EQ(archives->calls.size(), 1U);
}

TEST_F(ArchiveChangesTest, onlyWhatWasShownIsReplaced)
{
    there->file("/dst/a", "old");
    begin(copyOperands(context()));
    there->nodes.at("/dst/a").mtime += 1;
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(archives->calls, IsEmpty());
    EXPECT_THAT(dialogs->confirmations, SizeIs(2));
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(archives->calls, SizeIs(1));
}

TEST_F(ArchiveChangesTest, twoOperationsDoNotWriteOneName)
{
    begin(copyOperands(context()));
    begin(copyOperands(context()));
    EXPECT_THAT(lastError(), HasSubstr("copy failed on /dst/a: another operation is writing it"));
    EXPECT_THAT(archives->calls, SizeIs(1));
    finishWork();
    begin(copyOperands(context()));
    EXPECT_THAT(archives->calls, SizeIs(2));
    finishWork();

    FileDrag const added{.connection = "local", .directory = "/src", .names = {"new"}};
    begin(deliver(context(), {.drag = added}));
    begin(deliver(context(), {.drag = added}));
    EXPECT_THAT(lastError(), HasSubstr("change failed on /src/box.zip: another operation is writing it"));
    EXPECT_THAT(archives->calls, SizeIs(3));
}

TEST_F(ArchiveChangesTest, whatIsTooLargeIsUnpackedIfTheUserSaysSo)
{
    auto const tooLarge = std::make_exception_ptr(ArchiveTooLarge(std::int64_t{9} << 50U, std::int64_t{3} << 30U));
    begin(copyOperands(context()));
    archives->end->fail(tooLarge);
    loop.drain();
    EXPECT_EQ(dialogs->confirmations.back().question.title, "Copy 1 item?");
    EXPECT_THAT(dialogs->confirmations.back().question.message,
                HasSubstr("Unpacked it takes 9.0 PiB. 3.0 GiB are free there."));
    confirm(Dialogs::Answer::cancel);
    EXPECT_THAT(source.display.status, HasSubstr("cancelled"));
    begin(copyOperands(context()));
    archives->end->fail(tooLarge);
    loop.drain();
    confirm(Dialogs::Answer::ok);
    EXPECT_EQ(archives->calls.back(), "extract docs/a /src/box.zip web1:/dst");
    EXPECT_EQ(archives->calls.end()[-2], "take any size");
    finishWork();
    EXPECT_TRUE(operation->isDone());
}

TEST_F(ArchiveChangesTest, anArchiveThatAnotherProgramChangesIsListedAnew)
{
    auto const forgotten = [this] { return insides.back()->disconnects; };
    source.pane->checkForChanges();
    loop.drain();
    EXPECT_EQ(forgotten(), 0);
    here->file("/src/box.zip", "another content");
    filesInside.push_back(file("c"));
    source.pane->checkForChanges();
    loop.drain();
    EXPECT_EQ(forgotten(), 1);
    EXPECT_TRUE(source.pane->model().rowForName("c"));
    source.pane->checkForChanges();
    loop.drain();
    EXPECT_EQ(forgotten(), 1);
}

TEST_F(ArchiveChangesTest, whatCannotBeDoneIsSaid)
{
    begin(moveOperands(context()));
    EXPECT_EQ(source.display.status, "⚠︎ files cannot be moved out of an archive");
    enter(target, thereBrowser, "web1", "/dst");
    begin(copyOperands(context()));
    EXPECT_EQ(source.display.status, "⚠︎ files cannot be copied from one archive into another");
    show(source, hereBrowser, "local", "/src");
    mark({"b"});
    begin(moveOperands(context()));
    EXPECT_EQ(source.display.status, "⚠︎ files cannot be moved into an archive");
    begin(copyOperands(context()));
    EXPECT_EQ(source.display.status, "⚠︎ only archives on this Mac can be added to");
    auto onHost = context();
    onHost.operands = target.pane->operands();
    begin(deleteOperands(onHost));
    EXPECT_EQ(source.display.status, "⚠︎ only archives on this Mac can be changed");
    EXPECT_THAT(archives->calls, IsEmpty());
    EXPECT_THAT(dialogs->confirmations, IsEmpty());
}

TEST_F(ArchiveChangesTest, deleteAsksAndReadsTheArchiveAnew)
{
    begin(deleteOperands(context()));
    EXPECT_EQ(dialogs->confirmations.back().question.title, "Delete a from box.zip?");
    EXPECT_EQ(dialogs->confirmations.back().question.message,
              "This rewrites the archive. There is no Trash for what is inside one.\n\na");
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(archives->calls, ElementsAre("remove docs/a /src/box.zip"));
    EXPECT_EQ(dialogs->works.front()->title, "Changing archive…");
    auto const before = listed;
    finishWork();
    EXPECT_EQ(listed, before + 1);
    EXPECT_EQ(source.pane->cursorName(), "b");
}

TEST_F(ArchiveChangesTest, aFailureIsShownAndACancelledChangeIsSaid)
{
    begin(deleteOperands(context()));
    confirm(Dialogs::Answer::ok);
    archives->end->fail(std::make_exception_ptr(FileOperationError::Failed("remove", "/src/box.zip", "no")));
    loop.drain();
    EXPECT_EQ(lastError(), "remove failed on /src/box.zip: no");
    dialogs->errors.back().answer({});
    begin(deleteOperands(context()));
    confirm(Dialogs::Answer::ok);
    dialogs->works.back()->cancel();
    loop.drain();
    EXPECT_THAT(source.display.status, HasSubstr("cancelled"));
}

TEST_F(ArchiveChangesTest, pastedFilesAreAddedToTheFolderOnShow)
{
    begin(deliver(context(), {.drag = {.connection = "local", .directory = "/src", .names = {"b", "new"}}}));
    EXPECT_EQ(dialogs->confirmations.back().question.title, "Replace b in the archive?");
    EXPECT_EQ(dialogs->confirmations.back().question.message, "Already inside box.zip:\nb");
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(archives->calls, ElementsAre("add /src/b /src/new /src/box.zip docs"));
    finishWork();
    EXPECT_EQ(source.pane->cursorName(), "b");

    begin(deliverPaths(context(), {"/x/c", "/y/d"}, TransferKind::copy));
    EXPECT_EQ(archives->calls.back(), "add /x/c /y/d /src/box.zip docs");
    finishWork();
}

TEST_F(ArchiveChangesTest, filesOfAHostAreFetchedBeforeTheyAreAdded)
{
    there->file("/dst/far", "far");
    here->folder("/scratch");
    auto with = context();
    with.makeScratchFolder = []() -> Task<std::string> { co_return "/scratch"; };
    begin(deliver(with, {.drag = {.connection = "web1", .directory = "/dst", .names = {"far"}}}));
    EXPECT_THAT(archives->calls, ElementsAre("add /scratch/far /src/box.zip docs"));
    finishWork();
    EXPECT_FALSE(here->has("/scratch"));
}

TEST_F(ArchiveChangesTest, membersThatWereCopiedArePastedElsewhere)
{
    auto into = context();
    into.operands = target.pane->operands();
    into.operands.names.clear();
    FileDrag const copied{.connection = "local:/src/box.zip", .directory = "/docs", .names = {"b"}};
    begin(deliver(into, {.drag = copied}));
    EXPECT_THAT(archives->calls, ElementsAre("extract docs/b /src/box.zip web1:/dst"));
    finishWork();

    source.pane->goUp();
    loop.drain();
    source.pane->goUp();
    loop.drain();
    begin(deliver(into, {.drag = copied}));
    EXPECT_THAT(lastError(), HasSubstr("no pane is in any more"));
}

} // namespace
} // namespace tw::test
