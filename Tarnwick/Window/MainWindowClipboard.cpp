// MainWindowController: what is copied, cut and pasted.

#include "Tarnwick/Clipboard/Paste.h"
#include "Tarnwick/Operations/CountPhrase.h"
#include "Tarnwick/Window/MainWindowController.h"

namespace tw {

void MainWindowController::attach(MainDisplay &display)
{
    window = &display;
    window->clipboard()->onOfferGone = [this] { showCut(nullptr); };
}

void MainWindowController::cmdClipboardCut()
{
    putOnClipboard(TransferKind::move);
}

void MainWindowController::cmdClipboardCopy()
{
    putOnClipboard(TransferKind::copy);
}

void MainWindowController::putOnClipboard(TransferKind kind)
{
    auto &pane = activePane();
    auto const what = pane.operands();
    if (what.names.empty() || !window)
        return pane.refuse();
    auto const isMove = kind == TransferKind::move;
    window->clipboard()->offer(
        {.connection = what.connection, .directory = what.path, .names = what.names, .isMove = isMove});
    // After the offer, which ends an earlier one.
    showCut(isMove ? std::make_shared<CutFiles const>(
                         CutFiles{what.connection, what.path, {what.names.begin(), what.names.end()}})
                   : nullptr);
    pane.showStatus({isMove ? "%@ cut" : "%@ copied", {countPhrase(what.names.size())}});
}

void MainWindowController::cmdClipboardPaste()
{
    if (!window || !activePane().model().snapshot())
        return;
    auto context = contextOf(pane(active));
    context.operands.names.clear();
    spawn({collaborators.mainContext, {}}, paste(std::move(context), window->clipboard(), services.scratchFiles));
}

void MainWindowController::showCut(std::shared_ptr<CutFiles const> files)
{
    cut = std::move(files);
    for (auto const &side : containers) {
        for (auto const &each : side->panes())
            each->showCut(cut);
    }
}

} // namespace tw
