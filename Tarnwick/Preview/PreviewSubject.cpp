#include "Tarnwick/Preview/PreviewSubject.h"

#include "Tarnwick/Panes/PaneController.h"

namespace tw {

std::optional<PreviewSubject> PreviewSubject::underCursor(PaneController const &pane)
{
    auto const &model = pane.model();
    auto const row = pane.cursorRow();
    auto const *const entry = row ? model.entry(*row) : nullptr;
    if (!entry)
        return std::nullopt;
    return PreviewSubject{.browser = pane.browserOnShow(),
                          .connection = pane.connectionName(),
                          .path = model.snapshot()->childPath(*entry),
                          .name = std::string(model.name(*row)),
                          .kind = entry->kind,
                          .size = entry->size,
                          .mtime = entry->mtime,
                          .isRemote = pane.connectionName() != localConnection};
}

} // namespace tw
