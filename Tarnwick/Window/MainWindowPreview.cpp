// The preview of the file under the cursor of the active pane.

#include "Tarnwick/Window/MainWindowController.h"

namespace tw {

void MainWindowController::usePreviews(std::shared_ptr<PreviewLoader> loader)
{
    previews = std::make_shared<PreviewController>(collaborators.mainContext, collaborators.clock, std::move(loader));
}

void MainWindowController::followPreview()
{
    if (previews && previews->isOpen())
        previews->follow(PreviewSubject::underCursor(activePane()), sideOfPreview());
}

bool MainWindowController::canPreview() const
{
    return previews && (previews->isOpen() || PreviewSubject::underCursor(activePane()));
}

void MainWindowController::cmdPreview()
{
    if (previews && previews->close())
        return;
    auto subject = PreviewSubject::underCursor(activePane());
    if (!previews || !subject)
        return activePane().refuse();
    previews->open(*std::move(subject), sideOfPreview());
}

/// It lies over the pane that nobody looks at.
PaneSide MainWindowController::sideOfPreview() const
{
    return active == PaneSide::left ? PaneSide::right : PaneSide::left;
}

} // namespace tw
