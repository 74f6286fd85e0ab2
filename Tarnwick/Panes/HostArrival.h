#pragma once

#include "TWCore/Async/ChildTask.h"
#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Panes/PaneSpec.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tw {

/// How a host is connected.
enum class HostLogin {
    silent,       ///< without questions to the user
    withQuestions ///< ssh may ask the user for passwords, codes and host keys
};

/// A pane's way to a host that has to be reached first.
///
/// A remembered folder is shown while the host is being reached, and looks like any other once the host is up. Without
/// a path that the user asked for, the host says where to begin, so nothing is shown before.
///
/// Threads: main context only.
/// Lifetime: shared; the pane holds it as long as it is on this way. Its own tasks hold it weakly.
/// Cancellation: its destructor stops its wait for the host, so that an attempt without other callers ends.
class HostArrival : public std::enable_shared_from_this<HostArrival> {
public:
    struct Events {
        /// The Browser of the host is known, whose host may not be up yet.
        std::function<void()> onKnown;
        /// The folder to go to: a remembered one, or one of a host that is up.
        std::function<void(std::shared_ptr<Browser>, std::string path)> onFolder;
        /// The host is up and there is no folder to go to, or the host could not be reached: see `failure`.
        std::function<void()> onEnd;
    };

    enum class Stage {
        connecting,      ///< nothing of the host can be shown yet
        openingFolder,   ///< the pane is on its way to a remembered folder
        onFolder,        ///< that folder is on show
        amongRemembered, ///< the user went on to other folders of the host
    };

    HostArrival(PaneSpec destination, Events events) : wanted(std::move(destination)), events(std::move(events)) {}

    ~HostArrival() { wish.request_stop(); }

    HostArrival(HostArrival const &) = delete;
    HostArrival &operator=(HostArrival const &) = delete;

    /// Sets out. The connection is asked for before the Browser, and both are about one attempt: a second attempt would
    /// repeat a wrong password, and an attempt without questions would come before the one with questions.
    void begin(std::shared_ptr<Executor> const &mainContext, Connections &connections, HostLogin login);

    PaneSpec const &destination() const noexcept { return wanted; }

    std::string const &host() const noexcept { return wanted.connection; }

    /// The Browser of the host; null as long as it is not known.
    std::shared_ptr<Browser> const &browser() const noexcept { return source; }

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
    using Connecting = ChildTask<std::shared_ptr<Browser>>;

    static Task<void> travel(std::weak_ptr<HostArrival> weak, Task<std::shared_ptr<Browser>> reaching,
                             Connecting connecting);
    static Task<bool> showRemembered(std::weak_ptr<HostArrival> weak, Task<std::shared_ptr<Browser>> reaching);
    static Task<std::string> startingFolder(std::shared_ptr<Browser> source, PaneSpec wanted);

    PaneSpec const wanted;
    Events const events;
    std::stop_source wish; ///< stops the whole way
    std::shared_ptr<Browser> source;
    Stage current = Stage::connecting;
    bool over = false;
    std::exception_ptr reason;
};

} // namespace tw
