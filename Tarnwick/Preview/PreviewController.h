#pragma once

#include "TWCore/Async/Clock.h"
#include "Tarnwick/Panes/Alarm.h"
#include "Tarnwick/Preview/PreviewDisplay.h"
#include "Tarnwick/Preview/PreviewLoader.h"

#include <memory>
#include <optional>
#include <stop_token>

namespace tw {

/// The preview of the file under the cursor: what is read for it, and when that is given up.
///
/// One file is read at a time, and the newest wish waits behind it. A cursor that moves on lets a file of this machine
/// finish for a moment, or show a first picture: a key that is held down would otherwise end every reading before there
/// is anything to see.
/// What is shown is always the name and the content of the same file. A file of a host is asked for once the cursor
/// rests, and given up when the cursor leaves it.
///
/// Threads: main context only.
/// Lifetime: shared; its tasks hold it weakly. The display outlives it or detaches.
class PreviewController : public std::enable_shared_from_this<PreviewController> {
public:
    /// How long a reading may go on after the cursor has left its file.
    static constexpr std::chrono::milliseconds patienceWithOld{100};

    /// How long the cursor rests before a host is asked.
    static constexpr std::chrono::milliseconds rest{150};

    /// After which the name is shown without the content, if that takes longer.
    static constexpr std::chrono::milliseconds silence{150};

    PreviewController(std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock,
                      std::shared_ptr<PreviewLoader> loader);
    ~PreviewController();

    void attach(PreviewDisplay &shown) { display = &shown; }

    void detach();

    bool isOpen() const noexcept { return over.has_value(); }

    /// Opens the panel over `side`. Nothing happens without a display.
    void open(PreviewSubject subject, PaneSide side);

    /// False: it was closed already.
    bool close();

    /// The cursor stands on this file now, or on none. The panel lies over `side`, which is not the cursor's.
    void follow(std::optional<PreviewSubject> subject, PaneSide side);

private:
    struct Reading {
        PreviewSubject subject;
        std::stop_source stop = {};
        bool isLeft = false;          ///< by the cursor
        bool hasFirstPicture = false; ///< on show, in little detail
    };

    static Task<void> read(std::weak_ptr<PreviewController> weak, std::shared_ptr<PreviewLoader> loader,
                           std::shared_ptr<Reading> reading, PictureBounds room);

    void beginSoon();
    void begin();
    void show(Reading &reading, PreviewContent const &content);
    void showName();
    void ended(std::shared_ptr<Reading> const &reading, std::exception_ptr const &failure);
    void giveUp();

    std::shared_ptr<Executor> const executor;
    std::shared_ptr<PreviewLoader> const source;
    PreviewDisplay *display = nullptr;
    std::optional<PaneSide> over; ///< nothing: it is closed
    std::optional<PreviewSubject> wanted;
    std::shared_ptr<Reading> running; ///< at most one; `wanted` is read after it
    Alarm leaving;
    Alarm rested;
    Alarm silent;
};

} // namespace tw
