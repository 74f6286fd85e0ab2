#pragma once

#include "TWEngine/Browsing/Browser.h"
#include "Tarnwick/Panes/Alarm.h"
#include "Tarnwick/Panes/HiddenDisplay.h"
#include "Tarnwick/Panes/NameSurviving.h"
#include "Tarnwick/Panes/Navigator.h"
#include "Tarnwick/Panes/Operands.h"
#include "Tarnwick/Panes/PaneCallbacks.h"
#include "Tarnwick/Panes/PaneCollaborators.h"
#include "Tarnwick/Panes/PaneCursor.h"
#include "Tarnwick/Panes/PaneDisplay.h"
#include "Tarnwick/Panes/PaneHistory.h"
#include "Tarnwick/Panes/PaneInput.h"
#include "Tarnwick/Panes/PaneNotices.h"
#include "Tarnwick/Panes/PaneSearch.h"
#include "Tarnwick/Panes/PaneSpec.h"
#include "Tarnwick/Panes/PaneSpinner.h"
#include "Tarnwick/Panes/PlaceMemory.h"
#include "Tarnwick/Panes/TypedPath.h"
#include "Tarnwick/Settings/Defaults.h"
#include "Tarnwick/Table/PaneModel.h"
#include "Tarnwick/Table/RenameEdit.h"

#include <functional>
#include <memory>
#include <span>
#include <string>

namespace tw {

class CommandHost;
class Connections;
class FolderWatcher;
struct KnownConnection;
class HostArrival;
enum class HostLogin;

/// One pane: how it gets from one folder to the next, and what it does with a key or a click.
///
/// The rule of a pane is that the old listing stays on show until the new one is there. A pane works the same with a
/// view and without one; a view that is attached shows everything at once.
///
/// Threads: main context only; only calls into the Browser suspend.
/// Lifetime: shared; its own tasks hold it weakly. The display is attached and detached by the view that implements it.
class PaneController final : public PaneInput, public std::enable_shared_from_this<PaneController> {
    struct Construction {};

public:
    using Collaborators = PaneCollaborators;
    using Callbacks = PaneCallbacks;

    /// A changed listing of so many entries is put in order on a worker. A shorter one takes a millisecond.
    static constexpr std::size_t longListing = 5'000;

    using MarksAfter = tw::MarksAfter;
    using Composition = PaneDisplay::Composition;

    static std::shared_ptr<PaneController> create(Collaborators collaborators, std::shared_ptr<Browser> browser,
                                                  std::string connectionName);
    PaneController(Construction, Collaborators collaborators, std::shared_ptr<Browser> browser,
                   std::string connectionName);
    ~PaneController() override;

    Callbacks callbacks;

    /// Shows everything on `display` from now on, until another is attached or it is detached.
    void attach(PaneDisplay &display);

    /// A display that is not the one attached, or not any more, changes nothing.
    void detach(PaneDisplay const &display);

    PaneModel const &model() const noexcept { return rows; }

    std::string const &connectionName() const noexcept { return connection; }

    /// The path last asked for, which may not be on show yet.
    std::string const &requestedPath() const noexcept { return requested; }

    /// The path of the listing on show, "/" with none.
    std::string pathOnShow() const;

    /// Where the pane is or is to be: a place that it is on its way to, also a host that is still being reached, and
    /// one that it could not get to as long as it shows another place only because it has to show something.
    PaneSpec place() const;

    /// The same, with the name of an archive in the place of its path.
    PaneSpec placeForDisplay() const;

    /// The place to come back to at the next start: outside of archives.
    PaneSpec placeToRemember() const;

    /// The archive that the listing on show is in; null: none.
    std::shared_ptr<OpenArchive const> const &archiveOnShow() const noexcept { return archive; }

    /// Lists the archive on show anew: it has been changed. The cursor goes to `select`, or stays if that is empty.
    void reloadArchive(std::string select);

    /// The pane is new and shows the same archive as another one.
    void shareArchive(PaneController const &other);

    /// The row of the cursor; nothing in an empty table.
    std::optional<int> cursorRow() const noexcept { return cursor.row(); }

    /// The name under the cursor; empty on the parent row and in an empty table.
    std::string_view cursorName() const { return cursor.name(); }

    /// What an operation that begins now works on.
    Operands operands();

    /// Where the listing on show comes from.
    std::shared_ptr<Browser> const &browserOnShow() const noexcept { return browser; }

    /// Whether there is a name in the operands. Costs the same for any number of marks.
    bool hasOperands() const { return !cursorName().empty() || rows.markedSummary().count > 0; }

    /// True if the rows are whole. Otherwise beeps and says that the folder is being read: marking all rows and
    /// operations wait, since they would work on a part.
    bool hasAllRows();

    /// Goes to a folder of the connection that the pane has. `select` is the name for the cursor; empty: the name
    /// that it was left on.
    void navigate(std::string path, std::string select = {}, MarksAfter marks = MarksAfter::dropped);

    /// Goes to a folder of a connection, which becomes the pane's when the folder has been opened.
    void switchTo(std::shared_ptr<Browser> source, std::string connectionName, std::string path,
                  std::string select = {});

    /// Goes to a folder of this machine or of a host, which is connected if need be. If that fails, the pane stays
    /// where it is, or goes home if it has shown nothing yet, and its strip says why. `connections` outlives the pane.
    void open(PaneSpec destination, Connections &connections);

    void editPath() { display->editPath(); }

    /// Reads the folder of `where` anew if it is on show and the pane is not on its way elsewhere. The cursor goes to
    /// `select`, or stays if that is empty; the marks that still apply stay.
    void rereadIfAt(Operands const &where, std::string select);

    /// Removes the marks on the names of `where` if its folder is on show.
    void unmarkIfAt(Operands const &where);

    /// Ends what the pane waits for, and takes the strip away. The pane shows the place of its rows again, or goes home
    /// if it has shown nothing yet. False if there is neither a wait nor a strip.
    bool giveUp();

    /// Something that the user waits for beside the pane's own listings, until the handle goes.
    [[nodiscard]] PaneSpinner::Work beginWork() const { return spinner.begin(); }

    /// The same for a change at `place`. A host that is silent meanwhile is named in the strip.
    [[nodiscard]] PaneSpinner::Work beginChange(std::shared_ptr<Browser> const &place) const;

    /// Forgets what is cached of the folder on show and reads it again. The marks that still apply stay. Repeats while
    /// the folder is being read have it read once more.
    void refresh();

    /// Reads the folder of a host again if the pane rests there: what is on show may have changed while nobody looked.
    void revalidate();

    /// Somebody looks at the pane again: looks for changes in the folder on show if the pane rests there, unless its
    /// strip says something, or folders are not to refresh themselves.
    void checkForChanges();

    /// The pane is closed: changes in the folder on show are nothing to it any more.
    void stopWatching();

    void openSelection();
    void goUp();

    /// To the visit before the one on show, or after it, on the connection that it was made on. Beeps at the end.
    void goBack();
    void goForward();

    bool canGoBack() const { return history.canGoBack(); }

    bool canGoForward() const { return history.canGoForward(); }

    /// The places that were visited, each once, the newest first.
    std::vector<PaneHistory::Visit> recentVisits(std::size_t limit) const { return history.recentVisits(limit); }

    void goToVisit(PaneHistory::Visit const &visit);

    /// A name in the rows is being edited. A changed listing waits, so that the field stays under the user's hands.
    void holdRefreshes() { holdsRefreshes = true; }

    /// The name has been edited: the newest listing that waited is shown.
    void applyDeferredRefresh();

    /// Where the cursor goes when these names have gone; empty: to the top.
    std::string nameSurviving(std::span<std::string const> removedNames) const
    {
        return tw::nameSurviving(rows, removedNames);
    }

    /// Sorts by `key`, or turns the direction round if it is the key already.
    void toggleSort(SortKey key);

    void toggleHidden();
    void adoptViewOptions(ViewOptions const &options);

    /// Marks or unmarks all rows.
    void markAll(PaneModel::Marks change);
    void invertMarks();

    /// Marks or unmarks the rows that a `NameMask` matches, and says so if there are none.
    void markMatching(std::string const &mask, PaneModel::Marks change);

    bool handleKey(KeyPress const &key) override;
    void textTyped(std::string_view text) override;
    void textComposed(std::string text) override;
    void rowClicked(int row, ClickModifiers held = {}) override;
    void rowDoubleClicked(int row) override;
    void moveCursorTo(int row) override;
    void scheduleRename(int row, std::chrono::milliseconds delay) override;
    void endRename(NameEnd how) override;
    void confirmName() override;
    void goToTyped(std::string text) override;
    void completePath(std::string text) override;
    void goToPart(int components) override;
    void noticeActionChosen(PaneNotice::Action action) override;
    void activated() override;
    void connectionMenuWanted() override;
    void connectionPicked(ConnectionItem const &item) override;

    /// Opens the field for the name under the cursor; beeps if there is none.
    void beginRename();

    /// A name is being edited in its row.
    bool isRenaming() const noexcept { return renaming.has_value(); }

    /// A name is being looked for by typing it.
    bool isSearching() const noexcept { return search.isUnderWay(); }

    void setActive(bool active);
    void takeKeyboardFocus();

    void openConnectionMenu(std::vector<ConnectionItem> items) { display->openConnectionMenu(std::move(items)); }

    void updateConnectionMenu(std::vector<ConnectionItem> items) { display->updateConnectionMenu(std::move(items)); }

    /// Something was asked for that the pane cannot do now.
    void refuse() { display->beep(); }

    /// The files that were cut, wherever; null: none. Those in the folder on show look like it.
    void showCut(std::shared_ptr<CutFiles const> files);

    /// Shows `text` until the next thing that writes the status line.
    void showStatus(Text text);

    /// The same for what an operation says. It outlasts a folder that is read again although the user has not asked
    /// for that.
    void showOutcome(Text text);

private:
    using Updates = UpdateStream<DirectorySnapshot>;

    static Task<void> performTyped(std::weak_ptr<PaneController> weak, std::shared_ptr<CommandHost> host,
                                   std::string text, std::uint64_t token);
    static Task<void> performCompletion(std::weak_ptr<PaneController> weak, std::shared_ptr<Browser> source,
                                        std::string text);
    TypedPath::Context typedContext(std::string home) const;
    void followTyped(std::string const &text, std::string home);
    std::optional<TypedPath> placeToComplete(std::string const &text, std::string home) const;
    Task<KnownConnection> connectionToComplete(TypedPath const &place, std::shared_ptr<Browser> own) const;
    static Task<void> probe(std::shared_ptr<CommandHost> host, std::shared_ptr<Clock> clock);
    static Task<void> subscribe(std::weak_ptr<PaneController> weak, std::shared_ptr<Browser> browser);
    static Task<void> listenToUpdates(std::weak_ptr<PaneController> weak, Updates stream);

    PaneSearch::Events searchEvents();
    void makeNavigator();
    void makeWatcher();
    void startWatching();
    static Task<void> readBehindRows(std::weak_ptr<PaneController> weak);
    void noteReading(std::exception_ptr const &failure);
    std::optional<int> secondsOfWatching() const;
    void startNavigation(Navigation navigation);
    void showPart(Navigation const &navigation, DirectorySnapshot part);
    void arrive(Navigation const &navigation, Navigator::Arrival arrival);
    void showListing(DirectorySnapshot snapshot, PlaceMemory::Place const &place);
    void fail(Navigation const &navigation, std::exception_ptr const &failure);
    void showFailure(PaneNotices::Failure what);
    void repeat(Navigation navigation);
    void leavePlace();
    bool restsOnListing() const;
    std::optional<std::string> wayOutOfDeadEnd() const;
    void rememberPlace();
    void followUpRefresh();

    void listen(Task<void> loop);
    void adopt(Navigation const &navigation, Updates updates);
    std::string cursorNameAfter(DirectorySnapshot const &next) const;
    static Task<OrderedListing> ordered(DirectorySnapshot snapshot, ViewOptions options, FolderPlacement placement);
    void applyRefresh(DirectorySnapshot snapshot);
    void applyRefresh(OrderedListing next);

    void setOut(PaneSpec destination, HostLogin login);
    void leaveHostArrival();
    void goToFolderOfHost(std::shared_ptr<Browser> source, std::string path);
    void endHostArrival();
    void showFailedHost(HostArrival const &arrival);
    void tellOfHost();
    void logIn();
    void showDetails(char const *title, std::string PaneNotice::*words);

    bool enterArchive(std::string const &path);
    bool enterArchive(ArchiveFile file, std::shared_ptr<OpenArchive const> outer, std::string inner);
    void leaveArchive();
    void adoptPlace(Navigation const &navigation);
    static PaneHistory::Visit visitOf(std::string connection, std::string path,
                                      std::shared_ptr<OpenArchive const> const &archive);
    static PaneSpec placeOf(OpenArchive const &archive);
    std::string titleOfConnection() const;
    void replayArchive(PaneHistory::Visit const &visit);
    static Task<void> returnToArchive(std::weak_ptr<PaneController> weak, Task<std::shared_ptr<Browser>> connecting,
                                      PaneHistory::Visit visit, std::uint64_t token);

    void replay(std::optional<PaneHistory::Visit> const &visit);
    void openFile(std::string path);
    static bool ask(std::function<void()> const &owner);
    bool handleModifiedKey(KeyPress const &key);
    bool handlePlainKey(Key key);
    bool handleSidewaysKey(Key key);
    bool handleBackspace(KeyPress const &key);
    bool handleSpace(KeyPress const &key);
    bool handleEscape();
    bool moveCursor(Key key);
    bool goThroughHistory(KeyPress const &key);
    bool wantMask(PaneModel::Marks change);
    bool toggleMarkAndAdvance();
    bool typeToSearch(KeyPress const &key);
    void beginScheduledRename();
    void endTyping();
    std::optional<int> cursorTarget(Key key) const;
    void cursorMoved();
    void marksChanged();
    void cursorAndMarksChanged();
    void prefetchAtCursor();
    void changeRows(std::function<void()> const &change);
    void restoreCursor(std::string_view name);

    void applyCut();
    void showPath(Text path);
    void showRequestedPath();
    void showConnection(std::string name);
    void showSortIndicator();
    void showWaiting();
    void showNotice();
    void refreshStatus();
    void refreshStatusAfterReread();

    Collaborators const collaborators;
    std::shared_ptr<Browser> browser;
    std::string connection;
    std::shared_ptr<OpenArchive const> archive; ///< whose inside is on show; null: of none
    PaneModel rows;
    PaneCursor cursor{rows};
    std::shared_ptr<CutFiles const> cut; ///< null: none
    PlaceMemory places;
    PaneHistory history;
    std::string requested;
    Text lastTiming; ///< the timing part of the status line
    PaneSpinner spinner;
    std::shared_ptr<Navigator> navigator;
    /// Where the pane is or is on its way to; null while a host is being reached.
    std::shared_ptr<Browser> heading;
    std::shared_ptr<OpenArchive const> headingArchive; ///< likewise; null: none
    bool isReading = false;                            ///< the rows on show are a part, and more are on their way
    bool wantsReread = false;                          ///< the refresh under way is followed by another
    std::shared_ptr<HostArrival> hostArrival;          ///< null: the pane waits for no host
    std::optional<PaneSpec> missed;                    ///< the place in whose stead the pane shows another one
    Connections *connections = nullptr;                ///< null before the first `open`
    PaneNotices notices;
    std::string typedWish; ///< what was typed for the newest wish; empty: nothing
    std::stop_source completing;
    bool wasTouched = false; ///< a key or a click came after the newest wish
    bool holdsRefreshes = false;
    std::optional<DirectorySnapshot> deferredRefresh; ///< of the folder on show
    PaneSearch search;
    std::optional<RenameEdit> renaming;
    Alarm pendingRename;
    std::string nameToEdit; ///< when `pendingRename` rings
    std::stop_source updateLoop;
    std::shared_ptr<FolderWatcher> watcher;
    bool isFolderGone = false; ///< the rows are those of a folder that cannot be read any more
    Defaults::Subscription placementObservation;
    Defaults::Subscription refreshObservation;

    // What is shown beside the rows, for a display that comes later.
    HiddenDisplay hidden;
    PaneDisplay *display = &hidden;
    Text shownPath;
    std::string shownConnection;
    Text status;
    bool showsOutcome = false; ///< `status` is what an operation says
    bool showsSummary = false; ///< the status line has nothing else to say
    bool isActive = false;
};

} // namespace tw
