#pragma once

#include "Tarnwick/Clipboard/Clipboard.h"

#include <QObject>

#include <chrono>
#include <memory>

namespace tw {

/// The clipboard through Qt.
///
/// The program that owns the clipboard may hang, and Qt waits for it. So under X11 that program is asked first whether
/// it answers at all, and nothing is read if it does not. Under Wayland each format costs at most the second that Qt
/// waits, and the first one without an answer is the last that is asked for.
class QtClipboard final : public QObject, public Clipboard, public std::enable_shared_from_this<QtClipboard> {
    Q_OBJECT

public:
    /// How long a program has to answer. Those that are only slow take a tenth of it.
    static constexpr std::chrono::milliseconds patience{1500};

    QtClipboard();

    void offer(FileDrag files) override;
    Task<std::optional<ClipboardContent>> read() override;
    void clear(std::uint64_t version) override;

    /// Has the desktop's clipboard manager, if there is one, take over what this program has copied: it would be gone
    /// with the process. Waits for the manager. For the end of the program, outside of its event loop.
    static void leaveToManager(std::chrono::milliseconds limit);

private:
    static Task<std::optional<ClipboardContent>> readOnceAnswered(std::shared_ptr<QtClipboard> self);
    void changed();

    std::uint64_t version = 0;
};

} // namespace tw
