#pragma once

#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "Tarnwick/Toolkit/Windows/MainWindow.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"
#include "tests/support/RecordingTarget.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tw::test {

/// The whole window on folders of the test's own, read through the real engine.
class WindowTest : public ::testing::Test {
protected:
    WindowTest();
    ~WindowTest() override;

    /// Shows the window, with `left` and `right` on show, the left one active and with the keyboard.
    void open();

    /// Closes the window, and whatever belongs to it.
    void close();

    PaneController &pane(PaneSide side) { return *controller->pane(side); }

    PaneController &active() { return controller->activePane(); }

    PaneTableView &table(PaneSide side) { return window->pane(side).table(); }

    PaneTableView &activeTable() { return table(controller->activeSide()); }

    /// A key goes to the widget that has the keyboard.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    /// Goes on when the listing of `path` is on show.
    void waitForPath(PaneSide side, std::string const &path);

    /// Goes on when the rows of a pane have been replaced once more, after `trigger`.
    void waitForReload(PaneSide side, std::function<void()> const &trigger);

    std::string cursorName();
    std::string status(PaneSide side);

    /// The words in a pane's strip; empty without a strip.
    std::string notice(PaneSide side);

    /// The names in the order of the rows; the parent row is "..".
    std::vector<std::string> shownNames(PaneSide side);

    /// The middle of a cell of the left pane, in its viewport.
    QPoint middleOf(int row, PaneColumn column);

    TemporaryFolder left;
    TemporaryFolder right;
    TemporaryFolder scratch; ///< for files that previews fetch
    OpeningServices opening; ///< of the next window; none, unless a test says otherwise
    EngineRuntime runtime;
    QtMainContext mainContext;
    MemoryDefaults defaults;
    TemporaryFolder ssh; ///< the user's saved hosts are its `config`; none of them can be reached
    ConnectionRegistry connections{{.engine = runtime,
                                    .mainContext = mainContext.context(),
                                    .sshProgram = "/bin/false",
                                    .sshConfig = ssh.path("config")}};
    RecordingTarget program{{{Command::showAbout, {}}, {Command::quit, {}}}};
    std::unique_ptr<MainWindowController> controller;
    std::unique_ptr<MainWindow> window;
};

} // namespace tw::test
