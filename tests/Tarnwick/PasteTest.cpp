#include "Tarnwick/Clipboard/Paste.h"

#include "tests/support/FakeClipboard.h"
#include "tests/support/TransferPanesTest.h"

#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// What is on the clipboard is pasted into /dst of the host.
class PasteTest : public TransferPanesTest {
protected:
    PasteTest() { clipboard->content.version = 7; }

    void pasteInto(Side &into)
    {
        auto wanted = context();
        wanted.operands = into.pane->operands();
        wanted.operands.names.clear();
        wanted.pane = into.pane;
        begin(paste(std::move(wanted), clipboard, [this](std::string name, std::string bytes) {
            return keep(this, std::move(name), std::move(bytes));
        }));
    }

    static Task<ScratchFile> keep(PasteTest *self, std::string name, std::string bytes)
    {
        self->here->folder("/scratch");
        self->here->file("/scratch/" + name, std::move(bytes));
        co_return ScratchFile{.folder = "/scratch",
                              .life = std::shared_ptr<void>(nullptr, [self](void *) { ++self->scratchFilesGone; })};
    }

    void offer(FileDrag files)
    {
        auto const isMove = files.isMove;
        clipboard->content.files = FileFormats::Offered{.own = std::move(files), .isMove = isMove};
    }

    std::shared_ptr<FakeClipboard> clipboard = std::make_shared<FakeClipboard>();
    int scratchFilesGone = 0;
};

TEST_F(PasteTest, whatWasCutHereMovesAndTheClipboardIsEmptied)
{
    offer({"local", "/src", {"a"}, true});
    pasteInto(target);
    EXPECT_EQ(there->content("/dst/a"), "aaaa");
    EXPECT_THAT(here->below("/src"), ElementsAre("/src/b"));
    EXPECT_THAT(clipboard->cleared, ElementsAre(7));
}

TEST_F(PasteTest, whatWasCopiedCanBePastedAgain)
{
    offer({"local", "/src", {"a"}});
    pasteInto(target);
    pasteInto(target);
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/a", "/dst/a(2)"));
    EXPECT_THAT(clipboard->cleared, IsEmpty());
}

TEST_F(PasteTest, whatAnotherProgramHasCutMovesFromAllItsFolders)
{
    here->folder("/more");
    here->file("/more/c", "cc");
    clipboard->content.files = FileFormats::Offered{.paths = {"/src/a", "/more/c"}, .isMove = true};
    pasteInto(target);
    EXPECT_THAT(there->below("/dst"), ElementsAre("/dst/a", "/dst/c"));
    EXPECT_THAT(here->below("/more"), IsEmpty());
    EXPECT_THAT(clipboard->cleared, ElementsAre(7));
}

TEST_F(PasteTest, aCutOfWhichSomethingStaysIsStillACut)
{
    here->folder("/more");
    here->file("/more/c", "cc");
    clipboard->content.files = FileFormats::Offered{.paths = {"/src/a", "/more/c"}, .isMove = true};
    auto isFirst = true;
    transfer->before = [&isFirst](auto const &) {
        if (std::exchange(isFirst, false))
            throw FileOperationError::Failed("write to remote", "a", "no space");
    };
    pasteInto(target);
    ASSERT_THAT(dialogs->errors, SizeIs(1));
    dialogs->errors.front().end->succeed({});
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_TRUE(here->has("/src/a"));
    EXPECT_EQ(there->content("/dst/c"), "cc");
    EXPECT_THAT(clipboard->cleared, IsEmpty());
}

TEST_F(PasteTest, aCutPastedWhereItIsStaysThere)
{
    offer({"local", "/src", {"a"}, true});
    pasteInto(source);
    EXPECT_EQ(source.display.status, "already here");
    EXPECT_THAT(here->below("/src"), ElementsAre("/src/a", "/src/b"));
    EXPECT_THAT(clipboard->cleared, IsEmpty());
}

TEST_F(PasteTest, aFileIsMadeOfAText)
{
    there->file("/dst/text.txt", "old");
    target.pane->refresh();
    loop.drain();
    clipboard->content.piece = ClipboardPiece{ClipboardPiece::Kind::text, "txt", "pasted"};
    pasteInto(target);
    ASSERT_THAT(dialogs->prompts, SizeIs(1));
    EXPECT_EQ(dialogs->prompts[0].question.title, "Paste text as a file");
    EXPECT_EQ(dialogs->prompts[0].question.initial, "text(2).txt");
    EXPECT_EQ(dialogs->prompts[0].question.objection("a/b").has_value(), true);
    answerPrompt("text.txt");
    EXPECT_EQ(there->content("/dst/text.txt"), "old") << "nothing is overwritten, whatever name is typed";
    EXPECT_EQ(there->content("/dst/text(2).txt"), "pasted");
    EXPECT_EQ(target.pane->cursorName(), "text(2).txt");
    EXPECT_EQ(scratchFilesGone, 1);
}

TEST_F(PasteTest, noFileIsMadeIfNoNameIsGiven)
{
    clipboard->content.piece = ClipboardPiece{ClipboardPiece::Kind::image, "png", "pixels"};
    pasteInto(target);
    ASSERT_THAT(dialogs->prompts, SizeIs(1));
    EXPECT_EQ(dialogs->prompts[0].question.title, "Paste image as a file");
    EXPECT_EQ(dialogs->prompts[0].question.initial, "image.png");
    dialogs->prompts[0].answer(std::nullopt);
    loop.drain();
    EXPECT_TRUE(operation->isDone());
    EXPECT_THAT(there->below("/dst"), IsEmpty());
}

TEST_F(PasteTest, whatCannotBePastedIsSaid)
{
    pasteInto(target);
    EXPECT_EQ(target.display.beeps, 1) << "the clipboard is empty";
    clipboard->isSilent = true;
    pasteInto(target);
    EXPECT_EQ(target.display.status, "⚠︎ the program that has copied it does not answer");
    clipboard->isSilent = false;
    clipboard->content.piece =
        ClipboardPiece{ClipboardPiece::Kind::text, "txt", std::string(FileFormats::mostBytes + 1, 'x')};
    pasteInto(target);
    EXPECT_EQ(target.display.status, "⚠︎ what is on the clipboard is too large to be pasted");
    EXPECT_THAT(dialogs->prompts, IsEmpty());
}

} // namespace
} // namespace tw::test
