// How long a folder that is in memory takes from the wish to the rows on screen, in the program's own window.

#include "TWEngine/Runtime/SharedTask.h"
#include "TWEngine/Transfer/TransferEngine.h"
#include "Tarnwick/Operations/TransferSteps.h"
#include "Tarnwick/Toolkit/Dialogs/SheetDialogs.h"
#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"
#include "Tarnwick/Transfers/JobList.h"
#include "bench/BenchWindow.h"
#include "bench/FarHost.h"
#include "bench/Figure.h"
#include "bench/ManyFiles.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEvent>

#include <array>
#include <atomic>
#include <filesystem>
#include <stdexcept>

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

/// Three uploads that go on in the strip at the bottom of the window.
class Uploads {
public:
    explicit Uploads(BenchWindow &bench) : dialogs(bench.window, bench.window.works())
    {
        std::filesystem::resize_file(source.file("endless"), std::uintmax_t{1} << 40U);
        far.loop.run(provider->connect());
        auto tools = TransferTools::find();
        tools.ssh = far.client.program();
        for (auto &upload : uploads) {
            upload.shown = dialogs.progress("Copy 1 item…", [] {});
            auto const list = bench.window.works();
            list->move(list->underWay().back(), Job::Place::background);
            upload.transfer = std::make_shared<TransferEngine>(far.engine, tools);
            auto const show = TransferSteps::reporterTo(bench.executor(), upload.shown);
            auto copying = upload.transfer->copy(
                {"endless"}, TransferEndpoint::local(source.path()),
                TransferEndpoint::remote(provider, target.folder(std::to_string(&upload - uploads.data()))),
                [show, passed = upload.passed](TransferProgress const &progress) {
                    *passed = progress.bytes;
                    show(progress);
                });
            upload.running = SharedTask<void>::start(far.engine.makeStrand().executor(), std::move(copying));
        }
        auto const hasBegun = [](Upload const &upload) { return *upload.passed > 0; };
        while (!std::ranges::all_of(uploads, hasBegun))
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }

    ~Uploads()
    {
        for (auto &upload : uploads) {
            upload.transfer->cancel();
            far.loop.run(outcomeOf(upload.running->wait()));
        }
        far.loop.run(provider->disconnect());
    }

    Uploads(Uploads const &) = delete;
    Uploads &operator=(Uploads const &) = delete;

    std::int64_t passed() const
    {
        std::int64_t sum = 0;
        for (auto const &upload : uploads)
            sum += *upload.passed;
        return sum;
    }

private:
    struct Upload {
        std::shared_ptr<Progress> shown = {};
        std::shared_ptr<TransferEngine> transfer = {};
        std::shared_ptr<std::atomic<std::int64_t>> passed = std::make_shared<std::atomic<std::int64_t>>();
        std::optional<SharedTask<void>> running = {};
    };

    FarHost far{std::chrono::milliseconds(0)};
    test::TemporaryFolder source;
    test::TemporaryFolder target;
    std::shared_ptr<SSHProvider> const provider = far.provider();
    SheetDialogs dialogs;
    std::array<Upload, 3> uploads;
};

/// A third of the time from one picture to the next.
constexpr double keyBesideUploadsMilliseconds = 5.0;

void measureKeyBesideUploads(Figures &figures, BenchWindow &bench, PaintWatch &watch)
{
    auto &pane = bench.leftPane();
    Uploads const uploads(bench);
    auto const before = uploads.passed();
    pane.handleKey({.key = Key::home, .text = {}});
    std::vector<double> times;
    for (int press = 0; press < 500; ++press)
        times.push_back(watch.millisecondsToPaint([&] { pane.handleKey({.key = Key::down, .text = {}}); }));
    if (uploads.passed() == before)
        throw std::runtime_error("no transfer was under way");
    figures.report("arrow key to painted row beside three uploads, 100,000 entries", median(std::move(times)),
                   Figures::Yardstick::limit, keyBesideUploadsMilliseconds, "ms", 1.0);
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
    measureKeyBesideUploads(figures, bench, watch);
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
