#include "Tarnwick/Clipboard/Paste.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Operations/Delivery.h"
#include "Tarnwick/Operations/UniqueName.h"
#include "Tarnwick/Table/NewName.h"

namespace tw {

namespace {

/// A name for the file that is free in the folder on show. It is only proposed, and a taken name is never overwritten.
std::string proposedName(OperationContext const &context, ClipboardPiece const &piece)
{
    auto const name = (piece.kind == ClipboardPiece::Kind::text ? "text." : "image.") + piece.extension;
    auto const pane = context.pane.lock();
    return uniqueName(name,
                      [&pane](std::string const &each) { return pane && pane->model().rowForName(each).has_value(); });
}

Dialogs::Prompt questionAbout(OperationContext const &context, ClipboardPiece const &piece)
{
    auto const &where = context.operands;
    return {.title = piece.kind == ClipboardPiece::Kind::text ? "Paste text as a file" : "Paste image as a file",
            .message = "Create in " + withNothingHidden(where.connection) + ":" + onOneLine(where.path),
            .initial = proposedName(context, piece),
            .okTitle = "Create",
            .objection = objectionToNewName};
}

Task<void> pastePiece(OperationContext context, ClipboardPiece piece, MakeScratchFile makeScratchFile)
{
    if (piece.bytes.size() > FileFormats::mostBytes) {
        context.warn("what is on the clipboard is too large to be pasted");
        co_return;
    }
    if (!context.operands.browser->writer()) {
        context.warn({"%@ is read-only", {context.operands.connection}});
        co_return;
    }
    auto const name = co_await context.dialogs->prompt(questionAbout(context, piece));
    if (!name)
        co_return;
    auto made = co_await outcomeOf(makeScratchFile(*name, std::move(piece.bytes)));
    if (made.failure) {
        co_await context.showFailure(made.failure);
        co_return;
    }
    auto const file = *std::move(made.value);
    co_await deliver(
        std::move(context),
        {.drag = {.connection = std::string(localConnection), .directory = file.folder, .names = {*name}}});
}

Task<void> pasteFiles(OperationContext context, FileFormats::Offered files, std::function<void()> onMoved)
{
    if (files.own)
        return deliver(std::move(context), {.drag = *std::move(files.own), .onMoved = std::move(onMoved)});
    return deliverPaths(std::move(context), std::move(files.paths),
                        files.isMove ? TransferKind::move : TransferKind::copy, SameFolder::duplicate,
                        std::move(onMoved));
}

} // namespace

Task<void> paste(OperationContext context, std::shared_ptr<Clipboard> clipboard, MakeScratchFile makeScratchFile)
{
    auto content = co_await clipboard->read();
    if (!content) {
        context.warn("the program that has copied it does not answer");
        co_return;
    }
    if (content->files) {
        auto const onMoved = [clipboard, version = content->version] { clipboard->clear(version); };
        co_await pasteFiles(std::move(context), *std::move(content->files), onMoved);
    } else if (content->piece && makeScratchFile) {
        co_await pastePiece(std::move(context), *std::move(content->piece), std::move(makeScratchFile));
    } else {
        context.refuse();
    }
}

} // namespace tw
