// How long a folder that is in memory takes from the wish to the rows on screen, in the program's own window.

#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"
#include "Tarnwick/Transfers/JobList.h"
#include "bench/BenchWindow.h"
#include "bench/Figure.h"
#include "bench/ManyFiles.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEvent>

#include <thread>

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
        return millisecondsToPaint([&] { pane.navigate(path); });
    }

    /// Milliseconds of `work` in the folder on show, to the end of the painting that follows.
    template <class Work>
    double millisecondsToPaint(Work const &work)
    {
        return millisecondsOf([&] { paintAfter(work); });
    }

    /// The same, but only the time in which this thread works: the screen is another process.
    template <class Work>
    double busyMillisecondsToPaint(Work const &work)
    {
        return busyMillisecondsOf([&] { paintAfter(work); });
    }

private:
    template <class Work>
    void paintAfter(Work const &work)
    {
        isPainting = false;
        work();
        // The painting is over when the events that it was among have been handled.
        while (!isPainting)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    PaneController const &shown;
    std::string wanted;
    bool isPainting = false;
};

/// A key of a held arrow may cost as much, so that a screen of 60 Hz has nearly all of each frame for painting.
constexpr double keyMilliseconds = 1.0;

/// The median of many presses of a key: our code alone, since the painting comes with later events.
double millisecondsOfKey(PaneController &pane, KeyPress const &key)
{
    constexpr int presses = 2'000;
    std::vector<double> times;
    for (int press = 0; press < presses; ++press)
        times.push_back(millisecondsOf([&] { pane.handleKey(key); }));
    return median(std::move(times));
}

void measureKeys(Figures &figures, PaneController &pane)
{
    auto const report = [&](std::string const &name, double measured) {
        figures.report(name, measured, Figures::Yardstick::limit, keyMilliseconds, "ms", 1.0);
    };
    pane.handleKey({.key = Key::home, .text = {}});
    report("arrow key among 100,000 entries, none marked", millisecondsOfKey(pane, {.key = Key::down, .text = {}}));
    pane.handleKey({.key = Key::keypadTimes, .text = {}});
    report("arrow key among 100,000 entries, all marked", millisecondsOfKey(pane, {.key = Key::down, .text = {}}));
    pane.handleKey({.key = Key::home, .text = {}});
    pane.handleKey({.key = Key::end, .shift = true, .text = {}});
    report("Shift+Up among 100,000 entries, all marked",
           millisecondsOfKey(pane, {.key = Key::up, .shift = true, .text = {}}));
    report("Insert among 100,000 entries, nearly all marked",
           millisecondsOfKey(pane, {.key = Key::insert, .text = {}}));
}

/// A key and the row that it moves the cursor to: most of a frame is left for what the desktop does with it.
constexpr double paintedKeyMilliseconds = 2.0;

void measurePaintedKey(Figures &figures, PaneController &pane, PaintWatch &watch)
{
    pane.handleKey({.key = Key::home, .text = {}});
    std::vector<double> times;
    for (int press = 0; press < 500; ++press)
        times.push_back(watch.busyMillisecondsToPaint([&] { pane.handleKey({.key = Key::down, .text = {}}); }));
    figures.report("work for an arrow key to painted row, 100,000 entries", median(std::move(times)),
                   Figures::Yardstick::limit, paintedKeyMilliseconds, "ms", 1.0);
}

/// Three works in the background strip that report all the time, as often as a pipe of 1 GB/s does.
class ReportingWorks {
public:
    explicit ReportingWorks(std::shared_ptr<JobList> list) : jobs(std::move(list))
    {
        for (int count = 0; count < 3; ++count) {
            works.push_back(jobs->begin("Copy 10,000 items…", [] {}));
            jobs->move(works.back(), Job::Place::background);
        }
        thread = std::jthread([this](std::stop_token const &stop) { reportUntil(stop); });
    }

    ~ReportingWorks()
    {
        thread.request_stop();
        thread.join();
        QCoreApplication::sendPostedEvents();
        for (auto const &work : works)
            jobs->end(work);
    }

    ReportingWorks(ReportingWorks const &) = delete;
    ReportingWorks &operator=(ReportingWorks const &) = delete;

private:
    void reportUntil(std::stop_token const &stop) const
    {
        for (std::int64_t count = 1; !stop.stop_requested(); ++count) {
            ProgressState const state{.bytes = count << 19,
                                      .total = std::int64_t{1} << 40,
                                      .item = std::to_string(count),
                                      .files = count,
                                      .totalFiles = 10'000'000};
            for (auto const &work : works)
                QMetaObject::invokeMethod(
                    qApp, [list = jobs, work, state] { list->update(*work, state); }, Qt::QueuedConnection);
            std::this_thread::sleep_for(std::chrono::microseconds(500));
        }
    }

    std::shared_ptr<JobList> const jobs;
    std::vector<std::shared_ptr<Job>> works;
    std::jthread thread;
};

/// A third of the time from one picture to the next.
constexpr double keyBesideWorksMilliseconds = 5.0;

void measureKeyBesideWorks(Figures &figures, BenchWindow &bench, PaintWatch &watch)
{
    auto &pane = bench.leftPane();
    ReportingWorks const works(bench.window.works());
    pane.handleKey({.key = Key::home, .text = {}});
    std::vector<double> times;
    for (int press = 0; press < 500; ++press)
        times.push_back(watch.millisecondsToPaint([&] { pane.handleKey({.key = Key::down, .text = {}}); }));
    figures.report("arrow key to painted row while three transfers report, 100,000 entries", median(std::move(times)),
                   Figures::Yardstick::limit, keyBesideWorksMilliseconds, "ms", 1.0);
}

/// A click on the title of a column: four pictures of a screen of 60 Hz.
constexpr double sortMilliseconds = 60.0;

void measureSort(Figures &figures, PaneController &pane, PaintWatch &watch)
{
    struct Column {
        SortKey key;
        char const *name;
    };

    for (auto const &column :
         {Column{SortKey::size, "size"}, Column{SortKey::date, "date"}, Column{SortKey::ext, "extension"}}) {
        auto const sortBy = [&](SortKey key) {
            auto options = pane.model().viewOptions();
            options.sortKey = key;
            return watch.millisecondsToPaint([&] { pane.adoptViewOptions(options); });
        };
        auto const turns = takeTurns(7, [&] { return sortBy(column.key); }, [&] { return sortBy(SortKey::name); });
        figures.report("100,000 entries sorted by " + std::string(column.name) + " instead of by name, to painted rows",
                       turns.subject, Figures::Yardstick::limit, sortMilliseconds, "ms", 1.0);
    }
}

int run()
{
    ManyFiles const veryMany(100'000);
    ManyFiles const many(10'000);
    ManyFiles const few(10);
    BenchWindow bench;
    auto &pane = bench.leftPane();
    PaintWatch watch(*bench.window.pane(PaneSide::left).table().viewport(), pane);

    watch.navigate(pane, many.path()); // cold
    Figures figures;
    auto const turns = takeTurns(
        31, [&] { return watch.navigate(pane, few.path()); }, [&] { return watch.navigate(pane, many.path()); });
    figures.report("warm navigation to painted rows, 10,000 entries", turns.peer, Figures::Yardstick::limit,
                   frameMilliseconds, "ms", 1.0);
    figures.report("warm navigation to painted rows, 10 entries", turns.subject, Figures::Yardstick::limit,
                   frameMilliseconds, "ms", 1.0);
    watch.navigate(pane, veryMany.path());
    measureKeys(figures, pane);
    measurePaintedKey(figures, pane, watch);
    measureKeyBesideWorks(figures, bench, watch);
    measureSort(figures, pane, watch);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main(int argc, char **argv)
{
    QApplication const application(argc, argv);
    return tw::bench::run();
}
