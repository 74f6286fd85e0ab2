#include "Tarnwick/Operations/CopyMove.h"

#include "Tarnwick/Operations/CopyStep.h"
#include "Tarnwick/Operations/Delete.h"
#include "Tarnwick/Operations/MoveWithin.h"
#include "Tarnwick/Operations/NewFolder.h"
#include "Tarnwick/Operations/Rename.h"
#include "Tarnwick/Operations/StagingFolder.h"
#include "Tarnwick/Operations/UniqueName.h"
#include "tests/support/TransferPanesTest.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace tw::test {
namespace {

using Answer = NameConflict::Answer;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class CopyMoveTest : public TransferPanesTest {
protected:
    CopyMoveTest() { mark({"a", "b"}); }

    void beginToCopy() { begin(copyOperands(context())); }

    void beginToMove() { begin(moveOperands(context())); }

    void copy()
    {
        beginToCopy();
        answerPrompt();
    }

    void move()
    {
        beginToMove();
        answerPrompt();
    }

    std::string status() const { return source.display.status; }

    static std::exception_ptr failed(std::string const &why)
    {
        return std::make_exception_ptr(FileOperationError::Failed("write to remote", "b", why));
    }
};

TEST_F(CopyMoveTest, asksWhereTo)
{
    beginToCopy();
    ASSERT_THAT(dialogs->prompts, SizeIs(1));
    auto const &question = dialogs->prompts.front().question;
    EXPECT_EQ(question.title, "Copy 2 items");
    EXPECT_EQ(question.message, "a\nb\n\nfrom local:/src\nto web1:");
    EXPECT_EQ(question.initial, "/dst");
    EXPECT_EQ(question.okTitle, "Copy");
    beginToMove();
    EXPECT_EQ(dialogs->prompts.back().question.title, "Move 2 items");
    EXPECT_EQ(dialogs->prompts.back().question.okTitle, "Move");
}

TEST_F(CopyMoveTest, withNothingToWorkOnItBeeps)
{
    source.pane->handleKey({.key = Key::escape, .text = {}});
    source.pane->moveCursorTo(0);
    beginToCopy();
    EXPECT_EQ(source.display.beeps, 1);
    EXPECT_THAT(dialogs->prompts, IsEmpty());
}

TEST_F(CopyMoveTest, aCopyIsShownInBothPanes)
{
    copy();
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
    EXPECT_TRUE(here->has("/src/a"));
    EXPECT_THAT(target.pane->model().visibleNames(), ElementsAre("a", "b"));
    EXPECT_THAT(source.pane->model().markedNames(), IsEmpty());
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(CopyMoveTest, progressIsShownWhileBytesMove)
{
    transfer->pausesBefore = "b";
    copy();
    ASSERT_THAT(dialogs->works, SizeIs(1));
    auto const work = dialogs->works.front();
    EXPECT_EQ(work->title, "Copy 2 items…");
    ASSERT_THAT(work->states, SizeIs(2));
    EXPECT_EQ(work->states.back().item, "b");
    EXPECT_EQ(work->states.back().files, 1);
    EXPECT_TRUE(work->isUnderWay);
    transfer->pause->succeed({});
    loop.drain();
    EXPECT_FALSE(work->isUnderWay);
    EXPECT_EQ(work->conclusion, "Copied 2 items to web1:/dst.");
}

TEST_F(CopyMoveTest, theAnswerCountsAndNotThePane)
{
    there->folder("/other");
    beginToCopy();
    answerPrompt("/other");
    EXPECT_TRUE(there->has("/other/a"));
    EXPECT_FALSE(there->has("/dst/a"));
}

TEST_F(CopyMoveTest, theAnswerMayNameAConnectionAHomeOrARelativePath)
{
    here->folder("/tmp");
    there->folder("/home");
    there->folder("/home/ann");
    there->folder("/dst/sub");
    for (auto const &[typed, path] : {std::pair("~", "/home/ann/a"), {"sub", "/dst/sub/a"}}) {
        mark({"a"});
        beginToCopy();
        answerPrompt(typed);
        EXPECT_TRUE(there->has(path)) << typed;
    }
    mark({"a"});
    beginToCopy();
    answerPrompt("local:/tmp");
    EXPECT_TRUE(here->has("/tmp/a"));
}

TEST_F(CopyMoveTest, whatLeadsNowhereStaysToBeCorrected)
{
    beginToCopy();
    auto const &objection = dialogs->prompts.front().question.objection;
    EXPECT_EQ(objection("/any"), std::nullopt);
    EXPECT_NE(objection("ftp://host/x"), std::nullopt);
}

TEST_F(CopyMoveTest, aTargetThatIsMissingIsOfferedToBeMade)
{
    beginToCopy();
    answerPrompt("/new");
    ASSERT_THAT(dialogs->confirmations, SizeIs(1));
    EXPECT_EQ(dialogs->confirmations.front().question.message, "There is no folder web1:/new yet.");
    confirm(Dialogs::Answer::ok);
    EXPECT_TRUE(there->has("/new/a"));
}

TEST_F(CopyMoveTest, panesOnAFolderAboveANewTargetShowIt)
{
    here->folder("/src/deep");
    show(target, hereBrowser, "local", "/src");
    mark({"a"});
    beginToCopy();
    answerPrompt("/src/deep/new");
    confirm(Dialogs::Answer::ok);
    EXPECT_TRUE(here->has("/src/deep/new/a"));
    here->file("/src/late", "");
    show(target, thereBrowser, "web1", "/");
    beginToCopy();
    answerPrompt("/new");
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(target.pane->model().visibleNames(), ElementsAre("dst", "new"));
}

TEST_F(CopyMoveTest, theHostOfTheTargetIsAskedForASignOfLifeToo)
{
    beginToCopy();
    answerPrompt("/new");
    clock->advance(std::chrono::seconds(1));
    loop.drain();
    EXPECT_EQ(there->commands, 1);
    confirm(Dialogs::Answer::ok);
    clock->advance(std::chrono::seconds(2));
    loop.drain();
    EXPECT_EQ(there->commands, 1) << "nobody waits any more";
}

TEST_F(CopyMoveTest, aFolderIsNotMovedOntoItselfUnderAnotherNameOfItsHost)
{
    // Both names lead to one machine, which no identifier says.
    there->nodes = here->nodes;
    here->before = [this](std::string const &request) {
        if (request.starts_with("factsAbout"))
            here->nodes = there->nodes;
    };
    mark({"a"});
    beginToMove();
    answerPrompt("/src");
    EXPECT_EQ(lastError(), "move failed on /src/a: it is there already: source and target are the same");
    EXPECT_TRUE(here->has("/src/a"));
    EXPECT_THAT(there->below("/src"), ElementsAre("/src/a", "/src/b")) << "nothing is left of the question";
}

TEST_F(CopyMoveTest, norIfAFileInItGrowsMeanwhile)
{
    there->nodes = here->nodes;
    here->before = [this](std::string const &request) {
        if (!request.starts_with("factsAbout"))
            return;
        here->nodes = there->nodes;
        there->file("/src/b", there->content("/src/b") + "x");
    };
    mark({"a", "b"});
    beginToMove();
    answerPrompt("/src");
    EXPECT_EQ(lastError(), "move failed on /src/a: it is there already: source and target are the same");
    EXPECT_TRUE(here->has("/src/a"));
}

TEST_F(CopyMoveTest, theSameFilesOnAnotherMachineAreNoSameFolder)
{
    there->file("/dst/a", "AAAA");
    mark({"a"});
    copy();
    resolve({Answer::replace});
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/a"));
}

TEST_F(CopyMoveTest, aTargetThatIsMissingStaysSoIfTheUserDoesNotWantIt)
{
    beginToCopy();
    answerPrompt("/new");
    confirm(Dialogs::Answer::cancel);
    EXPECT_FALSE(there->has("/new"));
    EXPECT_THAT(transfer->copies, IsEmpty());
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(CopyMoveTest, aTargetThatIsAFileIsRefused)
{
    there->file("/dst/file", "x");
    beginToCopy();
    answerPrompt("/dst/file");
    EXPECT_EQ(lastError(), "copy failed on /dst/file: this is a file, and no folder");
    EXPECT_THAT(transfer->copies, IsEmpty());
}

TEST_F(CopyMoveTest, aFolderIsNotCopiedBelowItself)
{
    here->folder("/src/f");
    here->folder("/src/f/deep");
    mark({"f"});
    beginToMove();
    answerPrompt("local:/src/f/deep");
    EXPECT_EQ(lastError(), "move failed on /src/f: a folder cannot go into itself");
    EXPECT_TRUE(here->has("/src/f/deep"));
}

TEST_F(CopyMoveTest, aFileIsNotCopiedOntoItself)
{
    beginToCopy();
    answerPrompt("local:/src");
    EXPECT_THAT(lastError(), HasSubstr("source and target are the same"));
    EXPECT_THAT(transfer->copies, IsEmpty());
}

TEST_F(CopyMoveTest, aQuestionThatFailsStopsTheOperation)
{
    there->before = [](std::string const &request) {
        if (request.starts_with("factsAbout"))
            throw FileOperationError::Failed("look", "/dst", "no way");
    };
    copy();
    EXPECT_EQ(lastError(), "look failed on /dst: no way");
    EXPECT_THAT(transfer->copies, IsEmpty());
}

TEST_F(CopyMoveTest, takenNamesAreAskedAboutWithWhatIsThere)
{
    there->file("/dst/a", "another");
    copy();
    ASSERT_THAT(dialogs->conflicts, SizeIs(1));
    auto const &question = dialogs->conflicts.front().question;
    ASSERT_THAT(question.names, SizeIs(1));
    EXPECT_EQ(question.names.front().source.size, 4);
    EXPECT_EQ(question.names.front().target.size, 7);
    EXPECT_THAT(transfer->copies, IsEmpty()) << "nothing begins before the answer";
}

TEST_F(CopyMoveTest, nothingIsWrittenIfTheUserCancelsTheQuestion)
{
    there->file("/dst/a", "another");
    copy();
    dialogs->conflicts.front().answer(std::nullopt);
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(there->content("/dst/a"), "another");
    EXPECT_FALSE(there->has("/dst/b"));
}

TEST_F(CopyMoveTest, withoutAQuestionTheTargetIsAskedOnce)
{
    copy();
    EXPECT_THAT(requestsOf(*there, "factsAbout"), ElementsAre("factsAbout /dst a b"));
}

TEST_F(CopyMoveTest, aNameThatIsTakenUnderTheSheetIsAskedAboutToo)
{
    there->file("/dst/a", "old");
    copy();
    there->file("/dst/b", "late");
    resolve({Answer::replace});
    ASSERT_THAT(dialogs->conflicts, SizeIs(2));
    auto const &question = dialogs->conflicts.back().question;
    EXPECT_EQ(question.message, "Files have changed there meanwhile. 1 item has a name that web1:/dst has already.");
    ASSERT_THAT(question.names, SizeIs(1));
    EXPECT_EQ(question.names.front().source.name, "b");
    EXPECT_THAT(transfer->copies, IsEmpty());
    resolve({Answer::skip});
    EXPECT_EQ(there->content("/dst/a"), "aaaa") << "its answer holds";
    EXPECT_EQ(there->content("/dst/b"), "late");
}

TEST_F(CopyMoveTest, onlyWhatWasShownIsReplaced)
{
    for (auto const *name : {"a", "b"})
        there->file(std::string("/dst/") + name, "old");
    copy();
    for (auto const *name : {"a", "b"})
        there->nodes.at(std::string("/dst/") + name).mtime += 1;
    resolve({Answer::replace, Answer::keepBoth});
    ASSERT_THAT(dialogs->conflicts, SizeIs(2));
    auto const &question = dialogs->conflicts.back().question;
    ASSERT_THAT(question.names, SizeIs(1));
    EXPECT_EQ(question.names.front().target.mtime, 1001);
    resolve({Answer::replace});
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
    EXPECT_EQ(there->content("/dst/b"), "old");
    EXPECT_EQ(there->content("/dst/b(2)"), "bb");
}

TEST_F(CopyMoveTest, nothingIsWrittenIfTheUserCancelsTheSecondQuestion)
{
    there->file("/dst/a", "old");
    copy();
    there->file("/dst/b", "late");
    resolve({Answer::replace});
    ASSERT_THAT(dialogs->conflicts, SizeIs(2));
    dialogs->conflicts.back().answer(std::nullopt);
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(there->content("/dst/a"), "old");
    EXPECT_EQ(there->content("/dst/b"), "late");
}

TEST_F(CopyMoveTest, whatIsSkippedStaysSoIfItsNameIsFreeByThen)
{
    there->file("/dst/a", "old");
    copy();
    there->nodes.erase("/dst/a");
    resolve({Answer::skip});
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/b"));
}

TEST_F(CopyMoveTest, eachTakenNameGetsItsAnswer)
{
    here->file("/src/c", "cc");
    mark({"a", "b", "c"});
    for (auto const *name : {"a", "b", "c"})
        there->file(std::string("/dst/") + name, "old");
    copy();
    resolve({Answer::replace, Answer::keepBoth, Answer::skip});
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
    EXPECT_EQ(there->content("/dst/b"), "old");
    EXPECT_EQ(there->content("/dst/b(2)"), "bb");
    EXPECT_EQ(there->content("/dst/c"), "old");
    EXPECT_FALSE(there->has("/dst/c(2)"));
}

TEST_F(CopyMoveTest, aNameThatIsFoundForOneIsFreeAtTheTarget)
{
    there->file("/dst/a", "old");
    for (int number = 2; number <= 30; ++number)
        there->file("/dst/a(" + std::to_string(number) + ")", "old");
    mark({"a"});
    copy();
    resolve({Answer::keepBoth});
    EXPECT_EQ(there->content("/dst/a(31)"), "aaaa");
}

TEST_F(CopyMoveTest, namesThatAreOneNameThereAreTaken)
{
    there->takesCasesForOne = true;
    here->file("/src/A", "capital");
    mark({"A", "a"});
    copy();
    ASSERT_THAT(dialogs->conflicts, SizeIs(1));
    EXPECT_EQ(dialogs->conflicts.front().question.names.size(), 1U);
    resolve({Answer::keepBoth});
    EXPECT_THAT(there->below("/dst"), SizeIs(2));
}

TEST_F(CopyMoveTest, ofTwoNamesThatAreOneNameThereTheReplacedOneStaysAtTheSourceAlsoIfItIsAsLarge)
{
    there->takesCasesForOne = true;
    here->file("/src/A", "AAAA");
    mark({"A", "a"});
    move();
    resolve({Answer::replace});
    EXPECT_EQ(here->content("/src/A"), "AAAA");
    EXPECT_FALSE(here->has("/src/a"));
    EXPECT_THAT(lastError(), HasSubstr("Not the same at the target (1 item):\nA"));
}

TEST_F(CopyMoveTest, aNameForWhichAllNumbersAreTakenIsNotWritten)
{
    there->file("/dst/a", "old");
    for (int number = 2; number <= highestUniqueNumber; ++number)
        there->file("/dst/a(" + std::to_string(number) + ")", "old");
    mark({"a"});
    copy();
    resolve({Answer::keepBoth});
    EXPECT_EQ(lastError(), "write failed on /dst/a: the names with all numbers up to 9999 are taken");
    EXPECT_THAT(transfer->copies, IsEmpty());
}

TEST_F(CopyMoveTest, anOldFileStaysUntilTheNewOneIsWhole)
{
    there->file("/dst/a", "old");
    there->file("/dst/b", "old too");
    there->file("/dst/c", "also old");
    here->file("/src/c", "c");
    mark({"a", "b", "c"});
    transfer->before = [](std::string const &name) {
        if (name == "b")
            throw FileOperationError::Failed("write to remote", "b", "no space");
    };
    copy();
    resolve({Answer::replace, Answer::replace, Answer::replace});
    EXPECT_EQ(lastError(),
              "write to remote failed on b: no space\n\nComplete (1 item):\na\n\nUntouched (2 items):\nb\nc");
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/a", "/dst/b", "/dst/c"));
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
    EXPECT_EQ(there->content("/dst/b"), "old too");
    EXPECT_EQ(there->content("/dst/c"), "also old");
}

TEST_F(CopyMoveTest, whatIsNotAsLargeAsItWasShownReplacesNothingAfterAFailure)
{
    there->file("/dst/a", "old");
    there->file("/dst/b", "old too");
    mark({"a", "b"});
    transfer->before = [this](std::string const &name) {
        if (name != "b")
            return;
        there->nodes.at(stagingIn(*there, "/dst") + "/a").content = "aa";
        throw FileOperationError::Failed("write to remote", "b", "no space");
    };
    copy();
    resolve({Answer::replace, Answer::replace});
    EXPECT_EQ(there->content("/dst/a"), "old");
    EXPECT_THAT(lastError(), HasSubstr("Untouched (2 items):\na\nb"));
}

TEST_F(CopyMoveTest, afterACancelTheOldFileIsThere)
{
    there->file("/dst/b", "old");
    transfer->pausesBefore = "b";
    copy();
    resolve({Answer::replace});
    dialogs->works.front()->cancel();
    loop.drain();
    EXPECT_EQ(status(), "⚠︎ copy 2 items cancelled: 1 of 2 files copied");
    EXPECT_EQ(there->content("/dst/b"), "old");
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/a", "/dst/b"));
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(CopyMoveTest, aCancelWhileFilesGetTheirNamesCountsThoseThatHaveThem)
{
    there->file("/dst/a", "old");
    there->file("/dst/b", "old too");
    there->before = [this](std::string const &request) {
        if (!request.starts_with("replace ") || !request.ends_with("/dst/b"))
            return;
        dialogs->works.front()->cancel();
        throw FileOperationError::Failed("rename", "/dst/b", "no answer");
    };
    copy();
    resolve({Answer::replace, Answer::replace});
    EXPECT_EQ(status(), "⚠︎ copy 2 items cancelled: 1 of 2 files copied");
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
    EXPECT_EQ(there->content("/dst/b"), "old too");
}

TEST_F(CopyMoveTest, aCancelBeforeTheNextStepCountsWhatItWouldHaveCopied)
{
    there->file("/dst/b", "old");
    there->making = std::make_shared<Completion<Done>>();
    copy();
    resolve({Answer::replace});
    dialogs->works.front()->cancel();
    letTimePass();
    EXPECT_EQ(status(), "⚠︎ copy 2 items cancelled: 1 of 2 files copied");
}

TEST_F(CopyMoveTest, aCancelDoesNotWaitForAHostThatHangsWhileFilesGetTheirNames)
{
    there->file("/dst/a", "old");
    there->before = [this](std::string const &request) {
        if (request.starts_with("replace ") && !there->silence)
            there->silence = std::make_shared<SharedCompletion<Done>>();
    };
    mark({"a"});
    copy();
    resolve({Answer::replace});
    dialogs->works.front()->cancel();
    letTimePass();
    EXPECT_FALSE(dialogs->works.front()->isUnderWay);
    EXPECT_EQ(status(), "⚠︎ copy 1 item cancelled: it is not known how many files were copied");
    EXPECT_THAT(lastError(),
                HasSubstr("The folder " + stagingIn(*there, "/dst") + " could not be deleted, or not yet."));
}

TEST_F(CopyMoveTest, aFolderThatWasMergingAtACancelIsNamed)
{
    here->folder("/src/f");
    here->file("/src/f/both", "new");
    there->folder("/dst/f");
    there->file("/dst/f/both", "old");
    transfer->before = [this](auto const &) {
        dialogs->works.front()->cancel();
        throw FileOperationError::Cancelled();
    };
    mark({"f"});
    copy();
    resolve({Answer::replace});
    EXPECT_EQ(lastError(), "Merged in part, and one file there may be neither the old nor the new one (1 item):\nf");
}

TEST_F(CopyMoveTest, filesThatReplaceLargeOnesComeInBatchesAndCountAsOneCopy)
{
    there->file("/dst/a", "old");
    there->file("/dst/b", "old too");
    here->file("/src/c", "c");
    mark({"a", "b", "c"});
    here->sizes = {{"/src/a", CopyStep::mostReplaced}, {"/src/b", CopyStep::mostReplaced}};
    transfer->pausesBefore = "b";
    copy();
    resolve({Answer::replace, Answer::replace});
    EXPECT_EQ(there->content("/dst/a"), "aaaa") << "it has its name before the next batch";
    auto const &shown = dialogs->works.front()->states.back();
    EXPECT_EQ(shown.files, 2);
    EXPECT_EQ(shown.totalFiles, 3);
    dialogs->works.front()->cancel();
    loop.drain();
    EXPECT_EQ(status(), "⚠︎ copy 3 items cancelled: 2 of 3 files copied");
    EXPECT_EQ(there->content("/dst/b"), "old too");
}

TEST_F(CopyMoveTest, nothingOfTheStagingFolderIsLeft)
{
    there->file("/dst/a", "old");
    mark({"a"});
    copy();
    resolve({Answer::keepBoth});
    ASSERT_THAT(transfer->copies, SizeIs(1));
    EXPECT_THAT(transfer->copies.front(), StartsWith("/src -> /dst/.tw-paste-"));
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/a", "/dst/a(2)"));
}

TEST_F(CopyMoveTest, aStagingFolderThatMayHaveBeenMadeIsGoneOrNamed)
{
    there->file("/dst/a", "old");
    mark({"a"});
    auto isSilent = false;
    there->before = [&](std::string const &request) {
        if (request.starts_with("makeDirectory")) {
            there->folder(request.substr(request.find('/')));
            throw std::runtime_error("the connection was lost");
        }
        if (isSilent && request.starts_with("removePermanently"))
            throw std::runtime_error("the connection was lost");
    };
    copy();
    resolve({Answer::replace});
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/a"));
    EXPECT_THAT(lastError(), Not(HasSubstr("could not be deleted")));
    isSilent = true;
    mark({"a"});
    copy();
    resolve({Answer::replace});
    EXPECT_THAT(lastError(),
                HasSubstr("The folder " + stagingIn(*there, "/dst") + " could not be deleted, or not yet."));
    EXPECT_EQ(there->content("/dst/a"), "old");
}

TEST_F(CopyMoveTest, aFailureOfTheStagedCopyLeavesNothingOfItToo)
{
    there->file("/dst/a", "old");
    mark({"a"});
    transfer->before = [](auto const &) { throw FileOperationError::Failed("write to remote", "a", "no space"); };
    copy();
    resolve({Answer::keepBoth});
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/a"));
    EXPECT_THAT(lastError(), HasSubstr("Untouched (1 item):\na"));
}

TEST_F(CopyMoveTest, aStagingFolderThatIsLeftBehindIsNamed)
{
    there->file("/dst/a", "old");
    mark({"a"});
    there->before = [](std::string const &request) {
        if (request.starts_with("removePermanently /dst/.tw-paste-"))
            throw FileOperationError::Failed("delete", "/dst", "no way");
    };
    transfer->before = [](auto const &) { throw FileOperationError::Failed("write to remote", "a", "no space"); };
    copy();
    resolve({Answer::keepBoth});
    auto const staging = there->below("/dst").front();
    EXPECT_THAT(staging, StartsWith("/dst/.tw-paste-"));
    EXPECT_THAT(lastError(), HasSubstr("The folder " + staging + " could not be deleted, or not yet."));
}

TEST_F(CopyMoveTest, theSourceOfAMoveGoesWhenAllHasArrived)
{
    move();
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
    EXPECT_THAT(here->below("/src"), IsEmpty());
    EXPECT_THAT(requestsOf(*here, "remove"), ElementsAre("remove /src/a /src/b")) << "to the Trash";
    EXPECT_EQ(there->requests.back(), "sync /dst");
    EXPECT_THAT(source.pane->model().visibleNames(), IsEmpty());
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(CopyMoveTest, whatChangedDuringTheCopyStaysAndIsNamed)
{
    transfer->before = [this](std::string const &name) {
        if (name == "b")
            here->nodes.at("/src/b").mtime += 1;
    };
    move();
    EXPECT_FALSE(here->has("/src/a"));
    EXPECT_TRUE(here->has("/src/b"));
    EXPECT_THAT(lastError(),
                HasSubstr("Changed there during the copy, so the target may have an older state (1 item):\nb"));
}

TEST_F(CopyMoveTest, whatChangesUntilAllIsOnTheDiskStaysToo)
{
    there->before = [this](std::string const &request) {
        if (request == "sync /dst")
            here->nodes.at("/src/b").mtime += 1;
    };
    move();
    EXPECT_FALSE(here->has("/src/a"));
    EXPECT_TRUE(here->has("/src/b"));
    EXPECT_THAT(lastError(),
                HasSubstr("Changed there during the copy, so the target may have an older state (1 item):\nb"));
}

TEST_F(CopyMoveTest, whatIsNotTheSameAtTheTargetStaysAndIsNamed)
{
    auto const cut = [this](std::string const &request) {
        if (request.starts_with("survey"))
            there->nodes.at("/dst/b").content = "";
    };
    there->before = cut;
    move();
    EXPECT_FALSE(here->has("/src/a"));
    EXPECT_TRUE(here->has("/src/b"));
    EXPECT_THAT(lastError(), HasSubstr("Not the same at the target (1 item):\nb"));
}

TEST_F(CopyMoveTest, afterAFailureNothingIsDeletedAndTheUserKnowsWhatIsWhere)
{
    here->file("/src/c", "cc");
    mark({"a", "b", "c"});
    transfer->before = [](std::string const &name) {
        if (name == "b")
            std::rethrow_exception(failed("No space left on device"));
    };
    move();
    EXPECT_THAT(here->below("/src"), SizeIs(3));
    EXPECT_EQ(lastError(), "write to remote failed on b: No space left on device\n\n"
                           "Complete (1 item):\na\n\nPerhaps there in part (1 item):\nb\n\nUntouched (1 item):\nc");
    EXPECT_THAT(dialogs->wordsOfErrors, ElementsAre("the last words about b"));
    EXPECT_THAT(source.pane->model().markedNames(), SizeIs(3)) << "to be tried again";
    EXPECT_THAT(target.pane->model().visibleNames(), ElementsAre("a"));
}

TEST_F(CopyMoveTest, aMoveThatIsCancelledDeletesNothingAndSaysWhatHasArrived)
{
    transfer->pausesBefore = "b";
    move();
    dialogs->works.front()->cancel();
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(status(), "⚠︎ move 2 items cancelled: 1 of 2 files copied");
    EXPECT_THAT(here->below("/src"), SizeIs(2));
    EXPECT_TRUE(there->has("/dst/a"));
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(CopyMoveTest, aCancelWithFilesThatNobodyHasCountedSaysSo)
{
    transfer->countsFiles = false;
    transfer->pausesBefore = "b";
    move();
    dialogs->works.front()->cancel();
    loop.drain();
    EXPECT_EQ(status(), "⚠︎ move 2 items cancelled: it is not known how many files were copied");
}

TEST_F(CopyMoveTest, aCancelAfterTheCopyStillKeepsTheSource)
{
    there->before = [this](std::string const &request) {
        if (request.starts_with("survey"))
            dialogs->works.front()->cancel();
    };
    move();
    EXPECT_THAT(here->below("/src"), SizeIs(2));
    EXPECT_THAT(status(), HasSubstr("move 2 items cancelled: 2 of 2 files copied"));
}

TEST_F(CopyMoveTest, ifTheTrashRefusesTheCopyIsCompleteAndTheSourceStays)
{
    here->before = [](std::string const &request) {
        if (request.starts_with("remove"))
            throw FileOperationError::NoTrash("/src/a", "no Trash here");
    };
    move();
    EXPECT_THAT(here->below("/src"), SizeIs(2));
    EXPECT_TRUE(there->has("/dst/b"));
    EXPECT_THAT(lastError(), HasSubstr("Everything was copied"));
    EXPECT_THAT(lastError(), HasSubstr("no Trash here"));
}

TEST_F(CopyMoveTest, whatAnotherTransferHasStillToWriteIsNotWritten)
{
    transfer->pausesBefore = "b";
    copy();
    mark({"b"});
    move();
    EXPECT_EQ(lastError(),
              "move failed on /dst/b: another operation is writing it. Wait until it has ended, or cancel it");
    EXPECT_THAT(transfer->copies, SizeIs(1));
    EXPECT_TRUE(here->has("/src/b"));
    transfer->pause->succeed({});
    loop.drain();
    EXPECT_EQ(there->content("/dst/b"), "bb");
    move();
    EXPECT_THAT(dialogs->conflicts, SizeIs(1)) << "it is there now, and nobody writes it";
}

TEST_F(CopyMoveTest, whatATransferWritesOrMovesIsNotChangedMeanwhile)
{
    transfer->pausesBefore = "b";
    move();
    begin(deleteOperands(context()));
    confirm(Dialogs::Answer::ok);
    EXPECT_EQ(lastError(),
              "delete failed on /src/a: another operation is moving it. Wait until it has ended, or cancel it");
    begin(performRename(context(), "b", "c"));
    EXPECT_THAT(lastError(), HasSubstr("rename failed on /src/b: another operation is moving it"));
    auto inTarget = context();
    inTarget.operands = target.pane->operands();
    begin(newFolder(inTarget));
    answerPrompt("b");
    EXPECT_THAT(lastError(), HasSubstr("create folder failed on /dst/b: another operation is writing it"));
    EXPECT_EQ(here->content("/src/b"), "bb");
    transfer->pause->succeed({});
    loop.drain();
    EXPECT_EQ(there->content("/dst/b"), "bb");
    EXPECT_FALSE(here->has("/src/b"));
}

TEST_F(CopyMoveTest, namesThatAreOneNameThereAreNotWrittenByTwoTransfers)
{
    there->takesCasesForOne = true;
    here->file("/src/B", "capital");
    transfer->pausesBefore = "b";
    copy();
    mark({"B"});
    copy();
    EXPECT_THAT(lastError(), HasSubstr("copy failed on /dst/B: another operation is writing it"));
    EXPECT_THAT(transfer->copies, SizeIs(1));
    transfer->pause->succeed({});
    loop.drain();
}

TEST_F(CopyMoveTest, anotherTransferThatEndsDuringTheQuestionHasItAskedAgain)
{
    auto other = claims->hold({{.place = "ssh:web1", .folder = "/dst", .names = {"a"}}});
    there->before = [&](std::string const &request) {
        if (request.starts_with("factsAbout"))
            other.reset();
    };
    copy();
    EXPECT_THAT(requestsOf(*there, "factsAbout"), SizeIs(2));
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
}

TEST_F(CopyMoveTest, aSheetThatStandsHoldsNoOtherTransferUp)
{
    there->file("/dst/a", "old");
    copy();
    ASSERT_THAT(dialogs->conflicts, SizeIs(1));
    copy();
    ASSERT_THAT(dialogs->conflicts, SizeIs(2));
    resolve({Answer::replace});
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
    EXPECT_THAT(dialogs->errors, IsEmpty());
    dialogs->conflicts.front().answer(std::vector{Answer::replace});
    loop.drain();
    ASSERT_THAT(dialogs->conflicts, SizeIs(3)) << "what the other one has written is not what was shown";
    EXPECT_THAT(dialogs->conflicts.back().question.names, SizeIs(2));
}

class MoveWithinTest : public CopyMoveTest {
protected:
    MoveWithinTest()
    {
        here->folder("/dst");
        show(target, hereBrowser, "local", "/dst");
        mark({"a", "b"});
    }
};

TEST_F(MoveWithinTest, aMoveWithinOnePlaceRenamesAndShowsNoProgress)
{
    move();
    EXPECT_THAT(here->below("/dst"), ElementsAre("/dst/a", "/dst/b"));
    EXPECT_THAT(requestsOf(*here, "move"), ElementsAre("move /src/a /dst/a", "move /src/b /dst/b"));
    EXPECT_THAT(transfer->copies, IsEmpty());
    EXPECT_THAT(dialogs->works, IsEmpty());
    EXPECT_THAT(target.pane->model().visibleNames(), ElementsAre("a", "b"));
}

TEST_F(MoveWithinTest, whatHasMovedBeforeAFailureStaysMoved)
{
    here->before = [](std::string const &request) {
        if (request == "move /src/b /dst/b")
            throw FileOperationError::Failed("rename", "/src/b", "no way");
    };
    move();
    EXPECT_TRUE(here->has("/dst/a"));
    EXPECT_TRUE(here->has("/src/b"));
    EXPECT_THAT(lastError(), HasSubstr("rename failed on /src/b: no way"));
    EXPECT_THAT(lastError(), HasSubstr("Complete (1 item):\na"));
    EXPECT_THAT(source.pane->model().visibleNames(), ElementsAre("b"));
}

TEST_F(MoveWithinTest, aFileIsReplacedWhenTheNewOneIsThere)
{
    here->file("/dst/a", "old");
    move();
    resolve({Answer::replace});
    EXPECT_EQ(here->content("/dst/a"), "aaaa");
    EXPECT_THAT(here->below("/dst"), ElementsAre("/dst/a", "/dst/b"));
    EXPECT_THAT(here->below("/src"), IsEmpty());
}

TEST_F(MoveWithinTest, aFileThatCannotBeReplacedStays)
{
    here->file("/dst/a", "old");
    here->before = [](std::string const &request) {
        if (request == "replace /src/a /dst/a")
            throw FileOperationError::Failed("rename", "/src/a", "no way");
    };
    move();
    resolve({Answer::replace});
    EXPECT_EQ(here->content("/dst/a"), "old");
    EXPECT_EQ(here->content("/src/a"), "aaaa");
    EXPECT_EQ(lastError(), "rename failed on /src/a: no way\n\nComplete (1 item):\nb\n\nUntouched (1 item):\na");
}

TEST_F(MoveWithinTest, whatVanishesAtTheSourceIsNotCalledComplete)
{
    here->file("/dst/a", "old");
    here->before = [this](std::string const &request) {
        if (request != "replace /src/a /dst/a")
            return;
        here->nodes.erase("/src/a");
        throw FileOperationError::Failed("rename", "/src/a", "No such file or directory");
    };
    move();
    resolve({Answer::replace});
    EXPECT_EQ(here->content("/dst/a"), "old");
    EXPECT_THAT(lastError(), HasSubstr("Complete (1 item):\nb\n\nUntouched (1 item):\na"));
}

TEST_F(MoveWithinTest, noOldFileIsLostWithADiskThatIsPulledOut)
{
    here->file("/dst/a", "old");
    here->file("/dst/b", "old too");
    here->before = [this](std::string const &request) {
        if (request != "replace /src/b /dst/b")
            return;
        std::erase_if(here->nodes, [](auto const &node) { return node.first.starts_with("/src"); });
        throw FileOperationError::Failed("rename", "/src/b", "No such file or directory");
    };
    move();
    resolve({Answer::replace, Answer::replace});
    EXPECT_EQ(here->content("/dst/a"), "aaaa");
    EXPECT_EQ(here->content("/dst/b"), "old too");
}

TEST_F(MoveWithinTest, whatNobodyCanSayIsNotCalledUntouched)
{
    here->before = [this](std::string const &request) {
        if (request == "move /src/b /dst/b")
            throw FileOperationError::Failed("rename", "/src/b", "no answer");
        if (request == "factsAbout /src a b" && !requestsOf(*here, "move").empty())
            throw FileOperationError::Failed("reading", "/src", "no answer");
    };
    move();
    EXPECT_EQ(lastError(), "rename failed on /src/b: no answer\n\nPerhaps there in part (2 items):\na\nb");
}

TEST_F(MoveWithinTest, aFileThatWasToBeReplacedMayHaveGone)
{
    here->file("/dst/a", "old");
    move();
    here->nodes.erase("/dst/a");
    resolve({Answer::replace});
    EXPECT_EQ(here->content("/dst/a"), "aaaa");
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

/// From /src to a disk that is mounted on /dst.
class MoveBetweenFileSystemsTest : public MoveWithinTest {
protected:
    MoveBetweenFileSystemsTest() { here->otherFileSystem = "/dst"; }

    std::string copyOfA() const { return here->has("/dst/a") ? here->content("/dst/a") : "none"; }
};

TEST_F(MoveBetweenFileSystemsTest, itIsShownAndCopiesBeforeTheSourceGoesForGood)
{
    transfer->pausesBefore = "b";
    move();
    ASSERT_THAT(dialogs->works, SizeIs(1));
    EXPECT_EQ(dialogs->works.front()->title, "Move 2 items…");
    EXPECT_EQ(dialogs->works.front()->states.back().item, "b");
    EXPECT_THAT(here->below("/src"), SizeIs(2));
    transfer->pause->succeed({});
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(here->below("/src"), IsEmpty());
    EXPECT_THAT(here->below("/dst"), ElementsAre("/dst/a", "/dst/b"));
    EXPECT_THAT(requestsOf(*here, "remove "), IsEmpty()) << "nothing goes to the Trash";
    auto const sync = std::ranges::find(here->requests, "sync /dst");
    EXPECT_THAT(std::vector(sync, here->requests.end()), Contains("removePermanently /src/a /src/b"));
    EXPECT_THAT(source.pane->model().visibleNames(), IsEmpty());
    EXPECT_THAT(target.pane->model().visibleNames(), ElementsAre("a", "b"));
}

TEST_F(MoveBetweenFileSystemsTest, aCancelKeepsTheSourceAndWhatHasArrivedWhole)
{
    here->file("/dst/b", "old");
    transfer->before = [this](std::string const &name) {
        if (name != "b")
            return;
        dialogs->works.front()->cancel();
        throw FileOperationError::Cancelled();
    };
    move();
    resolve({Answer::replace});
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(status(), "⚠︎ move 2 items cancelled: 1 of 2 files copied");
    EXPECT_THAT(here->below("/src"), SizeIs(2));
    EXPECT_THAT(here->below("/dst"), ElementsAre("/dst/a", "/dst/b")) << "and nothing of a staging folder";
    EXPECT_EQ(here->content("/dst/b"), "old");
}

TEST_F(MoveBetweenFileSystemsTest, ofAFolderThatIsNotWholeNothingStaysAfterACancel)
{
    here->folder("/src/f");
    here->file("/src/f/one", "1");
    transfer->before = [this](auto const &) {
        here->copyFrom(*here, "/src/f", here->below("/dst").front());
        dialogs->works.front()->cancel();
        throw FileOperationError::Cancelled();
    };
    mark({"f"});
    move();
    EXPECT_EQ(status(), "⚠︎ move 1 item cancelled: 0 of 1 files copied");
    EXPECT_THAT(here->below("/dst"), IsEmpty());
    EXPECT_TRUE(here->has("/src/f/one"));
}

TEST_F(MoveBetweenFileSystemsTest, ifANameIsTakenAtTheEndItSaysWhatIsThereAndWhatIsUntouched)
{
    here->file("/src/c", "c");
    here->file("/dst/c", "old");
    mark({"a", "b", "c"});
    transfer->before = [this](std::string const &name) {
        if (name == "b")
            here->file("/dst/b", "of another program");
    };
    move();
    resolve({Answer::replace});
    EXPECT_EQ(lastError(),
              "rename failed on /dst/b: File exists\n\nComplete (1 item):\na\n\nUntouched (2 items):\nb\nc");
    EXPECT_THAT(here->below("/dst"), ElementsAre("/dst/a", "/dst/b", "/dst/c"));
    EXPECT_EQ(here->content("/dst/b"), "of another program");
    EXPECT_EQ(here->content("/dst/c"), "old");
    EXPECT_THAT(here->below("/src"), SizeIs(3));
}

TEST_F(MoveBetweenFileSystemsTest, aCancelCountsOnlyWhatHasItsName)
{
    here->file("/src/c", "c");
    mark({"a", "b", "c"});
    transfer->before = [this](std::string const &name) {
        if (name != "c")
            return;
        here->file("/dst/b", "of another program");
        dialogs->works.front()->cancel();
        throw FileOperationError::Cancelled();
    };
    move();
    EXPECT_EQ(status(), "⚠︎ move 3 items cancelled: 1 of 3 files copied");
}

TEST_F(MoveBetweenFileSystemsTest, aCancelAfterTheCopyKeepsTheSourceAndAllThatHasArrived)
{
    here->before = [this](std::string const &request) {
        if (request.starts_with("survey /dst/.tw-paste-") && transfer->cancels == 0)
            dialogs->works.front()->cancel();
    };
    move();
    EXPECT_EQ(status(), "⚠︎ move 2 items cancelled: 2 of 2 files copied");
    EXPECT_THAT(here->below("/src"), SizeIs(2));
    EXPECT_THAT(here->below("/dst"), ElementsAre("/dst/a", "/dst/b"));
}

TEST_F(MoveBetweenFileSystemsTest, aCancelDoesNotWaitUntilADiskHasWrittenEverything)
{
    here->syncing = std::make_shared<Completion<Done>>();
    move();
    EXPECT_FALSE(operation->isDone());
    EXPECT_EQ(dialogs->works.front()->states.back().item, "waiting until it is on the disk");
    dialogs->works.front()->cancel();
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(here->below("/src"), SizeIs(2));
    EXPECT_THAT(here->below("/dst"), ElementsAre("/dst/a", "/dst/b"));
}

TEST_F(MoveBetweenFileSystemsTest, aCancelEndsTheDeletionOfTheSourceAndSaysHowFarItWas)
{
    here->before = [this](std::string const &request) {
        if (request == "removePermanently /src/a /src/b")
            here->removing = std::make_shared<Completion<Done>>();
    };
    move();
    EXPECT_FALSE(operation->isDone());
    EXPECT_EQ(dialogs->works.front()->states.back().item, "deleting the source");
    dialogs->works.front()->cancel();
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_EQ(status(), "⚠︎ move 2 items cancelled: everything has arrived, 1 of 2 items removed from the source");
    EXPECT_THAT(here->below("/src"), ElementsAre("/src/b"));
    EXPECT_THAT(here->below("/dst"), ElementsAre("/dst/a", "/dst/b"));
    EXPECT_THAT(source.pane->model().visibleNames(), ElementsAre("b"));
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(MoveBetweenFileSystemsTest, aFolderWhoseDeletionWasCancelledIsNotCalledWhole)
{
    here->folder("/src/f");
    here->folder("/src/g");
    here->before = [this](std::string const &request) {
        if (request == "removePermanently /src/f /src/g")
            here->removing = std::make_shared<Completion<Done>>();
    };
    mark({"f", "g"});
    move();
    EXPECT_FALSE(operation->isDone());
    dialogs->works.front()->cancel();
    loop.drain();
    EXPECT_EQ(status(), "⚠︎ move 2 items cancelled: everything has arrived, 1 of 2 items removed from the source, "
                        "one more perhaps in part");
}

TEST_F(MoveBetweenFileSystemsTest, aCancelDoesNotWaitForAPlaceThatDoesNotAnswer)
{
    here->making = std::make_shared<Completion<Done>>();
    move();
    dialogs->works.front()->cancel();
    loop.drain();
    clock->advance(StagingFolder::patience);
    loop.drain();
    EXPECT_THAT(lastError(), HasSubstr("The folder /dst/.tw-paste-"));
    EXPECT_THAT(here->below("/src"), SizeIs(2));
    here->making->succeed({});
    loop.drain();
    EXPECT_THAT(here->below("/dst"), IsEmpty()) << "it goes all the same";
}

TEST_F(MoveBetweenFileSystemsTest, aDiskThatDiesDoesNotHoldACancel)
{
    transfer->before = [this](std::string const &name) {
        if (name != "b")
            return;
        here->silence = std::make_shared<SharedCompletion<Done>>();
        dialogs->works.front()->cancel();
        throw FileOperationError::Cancelled();
    };
    move();
    letTimePass();
    EXPECT_EQ(status(), "⚠︎ move 2 items cancelled: it is not known how many files were copied");
    EXPECT_THAT(lastError(),
                HasSubstr("The folder " + stagingIn(*here, "/dst") + " could not be deleted, or not yet."));
    EXPECT_THAT(requestsOf(*here, "removePermanently"), IsEmpty()) << "a file may be on its way out of it";
    EXPECT_THAT(here->below("/src"), SizeIs(2));
}

TEST_F(MoveBetweenFileSystemsTest, aDiskThatDiesWhileFilesAreReplacedLosesNone)
{
    here->file("/dst/a", "old");
    here->before = [this](std::string const &request) {
        if (transfer->cancels > 0 || !request.starts_with("replace "))
            return;
        here->silence = std::make_shared<SharedCompletion<Done>>();
        dialogs->works.front()->cancel();
    };
    move();
    resolve({Answer::replace});
    letTimePass();
    EXPECT_FALSE(dialogs->works.front()->isUnderWay);
    EXPECT_THAT(lastError(),
                HasSubstr("The folder " + stagingIn(*here, "/dst") + " could not be deleted, or not yet."));
    EXPECT_EQ(here->content("/dst/a"), "old");
    EXPECT_EQ(here->content("/src/a"), "aaaa");
}

TEST_F(MoveBetweenFileSystemsTest, aDeletionOfCopiesThatTakesLongIsWaitedForUntilACancel)
{
    transfer->before = [this](std::string const &name) {
        if (name != "b")
            return;
        here->removing = std::make_shared<Completion<Done>>();
        std::rethrow_exception(failed("no way"));
    };
    move();
    letTimePass();
    EXPECT_TRUE(dialogs->works.front()->isUnderWay);
    dialogs->works.front()->cancel();
    letTimePass();
    EXPECT_FALSE(dialogs->works.front()->isUnderWay);
    EXPECT_THAT(lastError(), HasSubstr("The folder /dst/.tw-paste-"));
}

class MoveToADiskWithoutCasesTest : public MoveBetweenFileSystemsTest {
protected:
    MoveToADiskWithoutCasesTest()
    {
        here->takesCasesForOne = true;
        here->file("/src/A", "capital");
        mark({"A", "a"});
        move();
    }
};

TEST_F(MoveToADiskWithoutCasesTest, namesThatAreOneThereDoNotMeetInTheStagingFolder)
{
    resolve({Answer::keepBoth});
    EXPECT_EQ(here->content("/dst/A"), "capital");
    EXPECT_EQ(here->content("/dst/a(2)"), "aaaa");
    EXPECT_THAT(here->below("/src"), ElementsAre("/src/b"));
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(MoveToADiskWithoutCasesTest, ofTwoTheOneThatIsReplacedStaysAtTheSource)
{
    resolve({Answer::replace});
    EXPECT_EQ(here->content("/dst/A"), "aaaa") << "the disk keeps its spelling";
    EXPECT_EQ(here->content("/src/A"), "capital");
    EXPECT_FALSE(here->has("/src/a"));
    EXPECT_THAT(lastError(), HasSubstr("Not the same at the target (1 item):\nA"));
}

TEST_F(MoveBetweenFileSystemsTest, aFileOfTheNameThatAnotherProgramMakesMeanwhileStays)
{
    transfer->before = [this](auto const &) { here->file("/dst/a", "of another program"); };
    move();
    EXPECT_EQ(copyOfA(), "of another program");
    EXPECT_THAT(here->below("/src"), SizeIs(2));
    EXPECT_THAT(lastError(), HasSubstr("File exists"));
}

TEST_F(MoveBetweenFileSystemsTest, eachTakenNameGetsItsAnswer)
{
    here->file("/dst/a", "old");
    here->file("/dst/b", "old");
    here->folder("/src/f");
    here->file("/src/f/new", "new");
    here->folder("/dst/f");
    here->file("/dst/f/old", "old");
    mark({"f", "a", "b"});
    move();
    resolve({Answer::replace, Answer::replace, Answer::keepBoth});
    EXPECT_EQ(copyOfA(), "aaaa");
    EXPECT_EQ(here->content("/dst/b"), "old");
    EXPECT_EQ(here->content("/dst/b(2)"), "bb");
    EXPECT_THAT(here->below("/dst/f"), ElementsAre("/dst/f/new", "/dst/f/old"));
    EXPECT_THAT(here->below("/src"), IsEmpty());
    EXPECT_THAT(here->below("/dst"), SizeIs(6)) << "nothing of a staging folder";
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(MoveBetweenFileSystemsTest, whatHasChangedMeanwhileStaysAlsoIfItsCopyHasReplacedAFile)
{
    here->file("/dst/a", "old");
    transfer->before = [this](auto const &name) {
        if (name == "b")
            here->nodes.at("/src/a").mtime += 1;
    };
    move();
    resolve({Answer::replace});
    EXPECT_EQ(copyOfA(), "aaaa");
    EXPECT_THAT(here->below("/src"), ElementsAre("/src/a"));
    EXPECT_THAT(lastError(),
                HasSubstr("Changed there during the copy, so the target may have an older state (1 item):\na"));
}

TEST_F(MoveBetweenFileSystemsTest, mountsOfOneDeviceAreNoticedWhenNothingCanBeRenamed)
{
    here->isOneDevice = true;
    here->file("/dst/b", "old");
    here->folder("/src/f");
    here->file("/src/f/new", "new");
    here->folder("/dst/f");
    mark({"f", "a", "b"});
    transfer->pausesBefore = "b";
    move();
    resolve({Answer::replace, Answer::replace});
    EXPECT_TRUE(dialogs->works.back()->isUnderWay);
    transfer->pause->succeed({});
    loop.drain();
    EXPECT_THAT(here->below("/src"), IsEmpty());
    EXPECT_THAT(here->below("/dst"), ElementsAre("/dst/a", "/dst/b", "/dst/f", "/dst/f/new"));
    EXPECT_EQ(here->content("/dst/b"), "bb");
    EXPECT_THAT(requestsOf(*here, "remove "), IsEmpty()) << "nothing goes to the Trash";
    EXPECT_THAT(source.pane->model().visibleNames(), IsEmpty());
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(MoveBetweenFileSystemsTest, aMountPointDoesNotMove)
{
    here->otherFileSystem = "/src/usb";
    here->folder("/src/usb");
    here->file("/src/usb/file", "kept");
    mark({"usb", "a"});
    move();
    EXPECT_THAT(lastError(), HasSubstr("move failed on /src/usb: this is a file system of its own"));
    EXPECT_THAT(here->below("/dst"), IsEmpty());
    EXPECT_EQ(here->content("/src/usb/file"), "kept");
}

class MergeTest : public MoveWithinTest {
protected:
    MergeTest()
    {
        here->folder("/src/f");
        here->folder("/src/f/sub");
        here->file("/src/f/sub/new", "new");
        here->file("/src/f/both", "newer");
        here->folder("/dst/f");
        here->folder("/dst/f/sub");
        here->file("/dst/f/sub/old", "old");
        here->file("/dst/f/both", "older one");
        mark({"f"});
    }

    void merge()
    {
        move();
        resolve({Answer::replace});
    }
};

TEST_F(MergeTest, theSourceOfAFolderThatWasMergedGoesWhenAllOfItHasArrived)
{
    merge();
    EXPECT_THAT(here->below("/dst/f"), ElementsAre("/dst/f/both", "/dst/f/sub", "/dst/f/sub/new", "/dst/f/sub/old"));
    EXPECT_EQ(here->content("/dst/f/both"), "newer");
    EXPECT_FALSE(here->has("/src/f"));
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(MergeTest, aCancelEndsTheRenamingBesideIt)
{
    std::vector<std::string> names{"f"};
    for (std::size_t number = 0; number < 2 * mostInRequest; ++number) {
        names.push_back("name " + std::to_string(1000 + number));
        here->file("/src/" + names.back(), "");
    }
    mark(names);
    here->before = [this](std::string const &request) {
        if (request == "move /src/name 1000 /dst/name 1000")
            dialogs->works.front()->cancel();
    };
    merge();
    EXPECT_THAT(requestsOf(*here, "move"), SizeIs(mostInRequest));
    EXPECT_EQ(status(), "⚠︎ move 1001 items cancelled: 500 of 1,001 items moved");
    EXPECT_TRUE(here->has("/src/f"));
}

TEST_F(MergeTest, aFolderThatGetsAFileUnderTheSheetIsMergedAsWell)
{
    move();
    here->file("/dst/f/late", "late");
    here->nodes.at("/dst/f").mtime += 1;
    resolve({Answer::replace});
    EXPECT_THAT(dialogs->conflicts, SizeIs(1));
    EXPECT_EQ(here->content("/dst/f/both"), "newer");
    EXPECT_EQ(here->content("/dst/f/late"), "late");
}

TEST_F(MergeTest, theSourceStaysIfOneFileOfItHasNotArrived)
{
    here->before = [this](std::string const &request) {
        if (request.starts_with("survey /dst"))
            here->nodes.at("/dst/f/sub/new").content = "";
    };
    merge();
    EXPECT_TRUE(here->has("/src/f/both") && here->has("/src/f/sub/new"));
    EXPECT_THAT(lastError(), HasSubstr("Not the same at the target (1 item):\nf"));
}

TEST_F(MergeTest, theSourceStaysIfItChangedDuringTheCopy)
{
    transfer->before = [this](auto const &) { here->file("/src/f/sub/late", "late"); };
    merge();
    EXPECT_TRUE(here->has("/src/f/sub/late"));
    EXPECT_THAT(lastError(),
                HasSubstr("Changed there during the copy, so the target may have an older state (1 item):\nf"));
}

TEST_F(MoveWithinTest, bothAreKeptUnderTheirNames)
{
    here->file("/dst/a", "old");
    move();
    resolve({Answer::keepBoth});
    EXPECT_EQ(here->content("/dst/a"), "old");
    EXPECT_EQ(here->content("/dst/a(2)"), "aaaa");
    EXPECT_THAT(transfer->copies, IsEmpty());
}

} // namespace
} // namespace tw::test
