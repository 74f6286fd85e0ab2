#pragma once

#include "Tarnwick/Preview/PreviewContent.h"
#include "Tarnwick/Settings/PaneSide.h"

namespace tw {

/// The panel, as a PreviewController needs it. It never has the keyboard.
///
/// Threads: main context only.
class PreviewDisplay {
public:
    virtual ~PreviewDisplay() = default;

    /// Opens it over that side, or moves it there.
    virtual void openPreview(PaneSide over) = 0;
    virtual void closePreview() = 0;
    virtual void showPreview(PreviewContent const &content) = 0;

    /// The room for a picture in pixels of the screen, once it is open.
    virtual PictureBounds previewRoom() const = 0;
};

} // namespace tw
