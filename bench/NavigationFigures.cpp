// How long a folder that is in memory takes from the wish to the rows on screen, in the program's own window.

#include "TWEngine/Runtime/EngineRuntime.h"
#include "Tarnwick/Connections/ConnectionRegistry.h"
#include "Tarnwick/Toolkit/Program/QtMainContext.h"
#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "Tarnwick/Toolkit/Windows/MainWindow.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"
#include "bench/Figure.h"
#include "bench/ManyFiles.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEvent>

namespace tw::bench {
namespace {

/// The time from one picture to the next on a screen of 60 Hz.
constexpr double frameMilliseconds = 16.0;

/// Tells when a table has painted the listing of a folder.
class PaintWatch final : public QObject {
public:
    PaintWatch(QWidget &table, PaneController const &pane) : shown(pane) { table.installEventFilter(this); }

    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && shown.pathOnShow() == wanted)
            isPainting = true;
        return false;
    }

    /// Milliseconds from the navigation to the end of the painting of its rows.
    double navigate(PaneController &pane, std::string const &path)
    {
        wanted = path;
        isPainting = false;
        return millisecondsOf([&] {
            pane.navigate(path);
            // The painting is over when the events that it was among have been handled.
            while (!isPainting)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        });
    }

private:
    PaneController const &shown;
    std::string wanted;
    bool isPainting = false;
};

int run()
{
    ManyFiles const many(10'000);
    ManyFiles const few(10);
    EngineRuntime runtime;
    QtMainContext mainContext;
    ConnectionRegistry connections({.engine = runtime, .mainContext = mainContext.context()});
    MemoryDefaults defaults;
    MainWindowController controller({mainContext.context(), runtime.clock(), defaults}, connections);
    MainWindow window(controller, defaults);
    window.show();
    auto &pane = *controller.pane(PaneSide::left);
    PaintWatch watch(*window.pane(PaneSide::left).table().viewport(), pane);

    watch.navigate(pane, many.path()); // cold
    Figures figures;
    auto const turns = takeTurns(
        31, [&] { return watch.navigate(pane, few.path()); }, [&] { return watch.navigate(pane, many.path()); });
    figures.report("warm navigation to painted rows, 10,000 entries", turns.peer, Figures::Yardstick::limit,
                   frameMilliseconds, "ms", 1.0);
    figures.report("warm navigation to painted rows, 10 entries", turns.subject, Figures::Yardstick::limit,
                   frameMilliseconds, "ms", 1.0);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main(int argc, char **argv)
{
    QApplication const application(argc, argv);
    return tw::bench::run();
}
