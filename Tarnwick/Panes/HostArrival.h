#pragma once

#include "TWEngine/Runtime/SharedTask.h"
#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Panes/PaneSpec.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tw {

/// A pane's way to a host that has to be reached first.
///
/// A folder that is remembered from another time is shown while the host is being reached, and looks like any other
/// once the host is up. Where no path was asked for, the host says where to begin, so nothing is shown before.
///
/// Threads: main context only.
/// Lifetime: shared; the pane holds it as long as it is on this way. Its own tasks hold it weakly: when the pane goes
/// elsewhere and lets go of it, the rest of the way has no effect.
class HostArrival : public std::enable_shared_from_this<HostArrival> {
public:
    struct Events {
        /// The folder to go to: a remembered one, or one of a host that is up.
        std::function<void(std::shared_ptr<Browser>, std::string path)> onFolder;
        /// The host has been reached with nothing left to be done, or it could not be reached: see `failure`.
        std::function<void()> onEnd;
    };

    enum class Stage {
        connecting,      ///< nothing of the host can be shown yet
        openingFolder,   ///< the pane is on its way to a remembered folder
        onFolder,        ///< that folder is on show
        amongRemembered, ///< the user went on to other folders of the host
    };

    HostArrival(PaneSpec destination, Events events) : wanted(std::move(destination)), events(std::move(events)) {}

    /// Sets out. Both the Browser and the connection are asked for at once, so that they are about one attempt: a
    /// second one would come with the password that was wrong.
    void begin(std::shared_ptr<Executor> const &mainContext, Connections &connections);

    std::string const &host() const noexcept { return wanted.connection; }

    Stage stage() const noexcept { return current; }

    /// Whether the folder that the pane goes to is the remembered one.
    bool isOpeningFolder() const noexcept { return current == Stage::openingFolder; }

    /// The remembered folder is on show.
    void folderArrived() { current = Stage::onFolder; }

    /// The user went on to another folder of the host.
    void userWentOn() { current = Stage::amongRemembered; }

    /// Whether the pane shows that it waits for the host.
    bool isAwaited() const noexcept { return !over && current != Stage::amongRemembered; }

    /// The host has been reached, or not.
    bool isOver() const noexcept { return over; }

    /// Why the host could not be reached; null if it was reached, or is still awaited.
    std::exception_ptr const &failure() const noexcept { return reason; }

private:
    static Task<void> travel(std::weak_ptr<HostArrival> weak, Task<std::shared_ptr<Browser>> reaching,
                             SharedTask<std::shared_ptr<Browser>> connecting);
    static Task<bool> showRemembered(std::weak_ptr<HostArrival> weak, Task<std::shared_ptr<Browser>> reaching);
    static Task<std::string> startingFolder(std::shared_ptr<Browser> source, PaneSpec wanted);

    PaneSpec const wanted;
    Events const events;
    Stage current = Stage::connecting;
    bool over = false;
    std::exception_ptr reason;
};

} // namespace tw
