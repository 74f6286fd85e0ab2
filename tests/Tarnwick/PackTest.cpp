#include "Tarnwick/Operations/Pack.h"

#include "TWEngine/Transfer/HostWork.h"
#include "tests/support/TransferPanesTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class PackTest : public TransferPanesTest {
protected:
    void beginToPack(std::vector<std::string> const &names)
    {
        mark(names);
        begin(packOperands(context()));
    }

    void choose(std::string path, ArchiveFormat format)
    {
        dialogs->packPrompts.back().answer(PackTarget{std::move(path), format});
        loop.drain();
    }

    void beginToUnpack(std::string const &name)
    {
        here->file("/src/" + name, "x");
        source.pane->refresh();
        loop.drain();
        source.pane->moveCursorTo(source.pane->model().rowForName(name).value());
        begin(unpackArchive(context()));
    }

    void finishWork()
    {
        archives->end->succeed({});
        loop.drain();
    }
};

TEST_F(PackTest, asksForNameAndFormatAndPacks)
{
    beginToPack({"a", "b"});
    ASSERT_THAT(dialogs->packPrompts, SizeIs(1));
    auto const &question = dialogs->packPrompts.front().question;
    EXPECT_EQ(question.title, "Pack 2 items");
    EXPECT_EQ(question.message, "local:/src\na\nb");
    EXPECT_EQ(question.directory, "/dst");
    EXPECT_EQ(question.stem, "src");
    EXPECT_THAT(question.formats, ElementsAre(ArchiveFormat::zip, ArchiveFormat::tarGz));
    choose("/dst/x.tar.gz", ArchiveFormat::tarGz);
    EXPECT_THAT(archives->calls, ElementsAre("formats /src web1:/dst", "pack a b /src web1:/dst/x.tar.gz tarGz"));
    ASSERT_THAT(dialogs->works, SizeIs(1));
    EXPECT_EQ(dialogs->works.front()->title, "Pack 2 items…");
    there->file("/dst/x.tar.gz", "x");
    finishWork();
    EXPECT_EQ(dialogs->works.front()->conclusion, "Pack 2 items: done.");
    EXPECT_EQ(target.pane->cursorName(), "x.tar.gz");
    EXPECT_EQ(source.pane->model().markedSummary().count, 0U);
}

TEST_F(PackTest, aNameThatIsTakenIsReplacedAfterAQuestionOnly)
{
    there->file("/dst/x.zip", "old");
    beginToPack({"a"});
    EXPECT_EQ(dialogs->packPrompts.back().question.stem, "a");
    choose("x.zip", ArchiveFormat::zip);
    EXPECT_EQ(dialogs->confirmations.back().question.title, "Replace x.zip?");
    confirm(Dialogs::Answer::cancel);
    EXPECT_THAT(archives->calls, SizeIs(1));
    beginToPack({"a"});
    choose("x.zip", ArchiveFormat::zip);
    confirm(Dialogs::Answer::ok);
    EXPECT_EQ(archives->calls.back(), "pack a /src web1:/dst/x.zip zip");
    finishWork();
}

TEST_F(PackTest, onlyTheArchiveThatWasShownIsReplaced)
{
    there->file("/dst/x.zip", "old");
    beginToPack({"a"});
    choose("x.zip", ArchiveFormat::zip);
    there->nodes.at("/dst/x.zip").mtime += 1;
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(archives->calls, SizeIs(1)) << "the formats";
    EXPECT_THAT(dialogs->confirmations, SizeIs(2));
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(archives->calls, SizeIs(2));
    finishWork();
}

TEST_F(PackTest, twoOperationsDoNotWriteOneArchive)
{
    beginToPack({"a"});
    choose("x.zip", ArchiveFormat::zip);
    beginToPack({"b"});
    choose("x.zip", ArchiveFormat::zip);
    EXPECT_THAT(lastError(), HasSubstr("pack failed on /dst/x.zip: another operation is writing it"));
    EXPECT_THAT(archives->calls, SizeIs(3)) << "one of them packs";
    finishWork();
}

TEST_F(PackTest, aCancelThatAHostDoesNotFollowSaysSo)
{
    beginToPack({"a"});
    choose("x.zip", ArchiveFormat::zip);
    archives->end->fail(std::make_exception_ptr(HostWork::MayGoOn()));
    loop.drain();
    EXPECT_EQ(source.display.status, "⚠︎ Pack 1 item cancelled: the host may go on with it");
    EXPECT_THAT(dialogs->errors, IsEmpty());
}

TEST_F(PackTest, anArchiveIsUnpackedIntoAFolderOfItsName)
{
    beginToUnpack("c.tar.gz");
    EXPECT_EQ(dialogs->confirmations.back().question.title, "Unpack c.tar.gz?");
    EXPECT_EQ(dialogs->confirmations.back().question.message, "Its contents go into web1:/dst/c.");
    EXPECT_EQ(dialogs->confirmations.back().question.okTitle, "Unpack");
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(archives->calls, ElementsAre("unpack /src/c.tar.gz web1:/dst/c"));
    there->folder("/dst/c");
    finishWork();
    EXPECT_EQ(target.pane->cursorName(), "c");
}

TEST_F(PackTest, aFolderThatIsThereStaysAsItIs)
{
    there->folder("/dst/c");
    beginToUnpack("c.zip");
    EXPECT_THAT(dialogs->confirmations.back().question.message, HasSubstr("web1:/dst/c(2)."));
    EXPECT_THAT(dialogs->confirmations.back().question.message, HasSubstr("c is there already."));
    confirm(Dialogs::Answer::ok);
    EXPECT_EQ(archives->calls.back(), "unpack /src/c.zip web1:/dst/c(2)");
    finishWork();
}

TEST_F(PackTest, aFolderThatIsMadeDuringTheQuestionStaysAsItIs)
{
    beginToUnpack("c.zip");
    there->folder("/dst/c");
    confirm(Dialogs::Answer::ok);
    ASSERT_THAT(dialogs->confirmations, SizeIs(2));
    EXPECT_THAT(dialogs->confirmations.back().question.message, HasSubstr("web1:/dst/c(2)."));
    confirm(Dialogs::Answer::ok);
    EXPECT_THAT(archives->calls, ElementsAre("unpack /src/c.zip web1:/dst/c(2)"));
    beginToUnpack("c.zip");
    EXPECT_THAT(dialogs->confirmations.back().question.message, HasSubstr("web1:/dst/c(3).")) << "c(2) is claimed";
    finishWork();
}

TEST_F(PackTest, whatIsNoArchiveIsToldOnTheStatusLine)
{
    beginToUnpack("notes.txt");
    EXPECT_THAT(source.display.status, HasSubstr("notes.txt is not an archive this can open"));
    EXPECT_THAT(dialogs->confirmations, IsEmpty());
    EXPECT_THAT(archives->calls, IsEmpty());
}

TEST_F(PackTest, aCancelAndAFailureAreTold)
{
    beginToUnpack("c.zip");
    confirm(Dialogs::Answer::ok);
    dialogs->works.back()->cancel();
    loop.drain();
    EXPECT_THAT(source.display.status, HasSubstr("Unpack c.zip cancelled"));
    beginToUnpack("c.zip");
    confirm(Dialogs::Answer::ok);
    archives->end->fail(std::make_exception_ptr(FileOperationError::Failed("unpack", "/src/c.zip", "broken")));
    loop.drain();
    EXPECT_EQ(lastError(), "unpack failed on /src/c.zip: broken");
}

} // namespace
} // namespace tw::test
