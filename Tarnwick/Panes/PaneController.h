#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Browsing/Browser.h"
#include "Tarnwick/Panes/KeyPress.h"
#include "Tarnwick/Panes/Operands.h"
#include "Tarnwick/Panes/PaneCursor.h"
#include "Tarnwick/Panes/PaneDisplay.h"
#include "Tarnwick/Panes/PaneSpinner.h"
#include "Tarnwick/Panes/PlaceMemory.h"
#include "Tarnwick/Settings/Defaults.h"
#include "Tarnwick/Table/PaneModel.h"

#include <functional>
#include <memory>
#include <string>

namespace tw {

class CommandHost;

/// One pane: how it gets from one folder to the next, and what it does with a key or a click.
///
/// The rule of a pane is that the old listing stays on show until the new one is there. A late answer for a place that
/// the user has left is dropped: each navigation raises a token, and an answer with an older token has no effect.
///
/// Threads: main context only; only calls into the Browser suspend.
/// Lifetime: shared; its own tasks hold it weakly. The display is attached and detached by the view that implements it.
class PaneController : public std::enable_shared_from_this<PaneController> {
public:
    /// What every pane is made with.
    struct Collaborators {
        std::shared_ptr<Executor> mainContext;
        std::shared_ptr<Clock> clock;
        Defaults &defaults; ///< outlives the pane
    };

    /// What the owner of a pane hears from it. Any of them may be empty.
    struct Callbacks {
        std::function<void()> onActivate;
        std::function<void()> onSwitchSide;
        std::function<void()> onLocationChanged;
        std::function<void(std::string path)> onOpenFile;
        std::function<void()> onConnectionMenuWanted;
        std::function<void(ConnectionItem const &item)> onConnectionPicked;
    };

    static std::shared_ptr<PaneController> create(Collaborators collaborators, std::shared_ptr<Browser> browser,
                                                  std::string connectionName);
    ~PaneController();

    Callbacks callbacks;

    /// Shows everything on `display` from now on, until another is attached or it is detached. Listens to refreshes.
    void attach(PaneDisplay &display);
    void detach();

    PaneModel const &model() const noexcept { return rows; }

    std::string const &connectionName() const noexcept { return connection; }

    /// The path last asked for, which may not be on show yet.
    std::string const &requestedPath() const noexcept { return requested; }

    /// The path of the listing on show, "/" with none.
    std::string pathOnShow() const;

    /// The row of the cursor; nothing in an empty table.
    std::optional<int> cursorRow() const noexcept { return cursor.row(); }

    /// The name under the cursor; empty on the parent row and in an empty table.
    std::string_view cursorName() const { return cursor.name(); }

    /// What an operation that begins now works on.
    Operands operands() const;

    enum class MarksAfter { dropped, kept };

    /// The one way to change location. `select` is the name for the cursor; empty: the one it had there last time.
    void navigate(std::string path, std::string select = {}, MarksAfter marks = MarksAfter::dropped);

    /// Stays on the listing on show, or with none goes to the first place, and tells why on the status line.
    void stayWithNotice(std::string const &notice);

    /// Leaves what is under way, and shows that a host is being reached. The listing on show stays.
    void showConnecting(std::string const &host);

    /// The host could not be reached: the pane stays where it is, or goes home if it has shown nothing yet.
    void showConnectFailed(std::string const &host, std::exception_ptr const &error);

    /// Goes to a folder of a connection, which becomes the pane's when the folder has been opened.
    void switchTo(std::shared_ptr<Browser> source, std::string connectionName, std::string path);

    /// The same with a listing from another time, while the host is still being reached: the status line and the
    /// spinner tell so until showConnected or showConnectFailed.
    void switchToRemembered(std::shared_ptr<Browser> source, std::string connectionName, std::string path);

    /// The host of what is on show has been reached.
    void showConnected();

    /// Whether a navigation or a connecting was begun since `token` was the current one.
    std::uint64_t token() const noexcept { return navigationToken; }

    /// Reads the folder of `where` anew if it is on show and the pane is not on its way elsewhere. The cursor goes to
    /// `select`, or stays if that is empty; the marks that still apply stay.
    void rereadIfAt(Operands const &where, std::string select);

    /// Something that the user waits for beside the pane's own listings, until the handle goes.
    [[nodiscard]] PaneSpinner::Work beginWork() const { return spinner.begin(); }

    /// Forgets what is cached of the folder on show and reads it again. The marks that still apply stay. Repeats while
    /// the folder is being read have it read once more.
    void refresh();

    void openSelection();
    void goUp();

    /// Sorts by `key`, or turns the direction round if it is the key already.
    void toggleSort(SortKey key);

    void toggleHidden();

    void adoptViewOptions(ViewOptions const &options);

    /// What a key does here. False: nothing, somebody else may have it.
    bool handleKey(KeyPress const &key);

    /// Goes where a path leads that was typed; "~" is the home folder of whoever is logged in where the pane is.
    void goToTyped(std::string text);

    /// The view's reports of what the mouse did.
    void rowClicked(int row, ClickModifiers held = {});
    void rowDoubleClicked(int row);

    /// The view got the keyboard.
    void activated();
    void setActive(bool active);
    void takeKeyboardFocus();

    /// The view's reports of its menu of connections: that it is wanted, and what was chosen from it.
    void connectionMenuWanted();
    void connectionPicked(ConnectionItem const &item);

    void openConnectionMenu(std::vector<ConnectionItem> items) { display->openConnectionMenu(std::move(items)); }

    void updateConnectionMenu(std::vector<ConnectionItem> items) { display->updateConnectionMenu(std::move(items)); }

    /// Shows `text` until the next thing that writes the status line.
    void showStatus(std::string const &text);

    /// The text for the user of a failure.
    static std::string describe(std::exception_ptr const &error);

private:
    using Updates = UpdateStream<DirectorySnapshot>;

    struct Construction {};

public:
    PaneController(Construction, Collaborators collaborators, std::shared_ptr<Browser> browser,
                   std::string connectionName);

private:
    /// One wish to be somewhere else.
    struct Navigation {
        std::string path;
        std::string select; ///< the name for the cursor, or empty
        MarksAfter marks = MarksAfter::dropped;
        std::string notice;        ///< for the status line after the arrival, or empty
        bool isRemembered = false; ///< its host is still being reached
        bool isReread = false;     ///< what is cached of the path is forgotten first
        /// Where the path is; the pane goes over to it when it arrives, so that what is on show and what it acts on
        /// never belong to two places. Null: the connection that it has.
        std::shared_ptr<Browser> source = {};
        std::string connection = {};
        std::uint64_t token = 0;
    };

    void startNavigation(Navigation navigation);
    static Task<void> performNavigation(std::weak_ptr<PaneController> weak, Navigation navigation);
    static Task<void> subscribe(std::weak_ptr<PaneController> weak, std::shared_ptr<Browser> browser);
    static Task<void> listenToUpdates(std::weak_ptr<PaneController> weak, Updates stream);
    static Task<void> performTyped(std::weak_ptr<PaneController> weak, std::shared_ptr<CommandHost> host,
                                   std::string text, std::uint64_t token);

    void subscribeToRefreshes();
    void arrive(Navigation const &navigation, OpenResult result, std::optional<Updates> updates,
                std::chrono::duration<double> elapsed);
    void fail(Navigation const &navigation, std::exception_ptr const &failure);
    void adopt(Navigation const &navigation, Updates updates);
    void applyRefresh(DirectorySnapshot snapshot);

    void rememberPlace();
    void changeRows(std::function<void()> const &change);
    void restoreCursor(std::string_view name);
    void cursorMoved();
    bool toggleMarkAndAdvance();
    bool handlePlainKey(Key key);
    void marksChanged();
    void cursorAndMarksChanged();
    void showSortIndicator();
    void showSpinner();
    void refreshStatus();
    void showConnection(std::string const &name);
    void prefetchAtCursor();
    std::optional<int> cursorTarget(Key key) const;

    Collaborators const collaborators;
    std::shared_ptr<Browser> browser;
    std::string connection;
    PaneModel rows;
    PaneCursor cursor{rows};
    PaneDisplay *display;
    Defaults::Subscription placementObservation;

    std::string requested;
    std::string lastTiming; ///< the timing part of the status line
    std::uint64_t navigationToken = 0;
    std::optional<std::uint64_t> rereading; ///< the token of the refresh under way
    bool wantsReread = false;               ///< another refresh follows it
    PlaceMemory places;                     ///< of this connection

    /// The host of a remembered folder, until it has been reached or not.
    enum class HostOnItsWay { no, aheadOfTheFolder, behindTheFolder };

    HostOnItsWay hostOnItsWay = HostOnItsWay::no;
    std::string hostNotice; ///< for the status line when a remembered folder arrives, or empty

    /// Where the pane is or is on its way to; null while a host is being reached.
    std::shared_ptr<Browser> heading;
    PaneSpinner spinner;
    PaneSpinner::Work awaited; ///< the listing or the host that the pane waits for, or null
    std::stop_source updateLoop;
};

} // namespace tw
