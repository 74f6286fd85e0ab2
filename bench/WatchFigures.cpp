// How soon a change that another program makes is on screen, and what watching costs: a folder that thousands of files
// are written into, and a large one that changes all the time. In the program's own window.

#include "Tarnwick/Toolkit/Table/PaneTableView.h"
#include "Tarnwick/Toolkit/Windows/PaneView.h"
#include "bench/BenchWindow.h"
#include "bench/Figure.h"
#include "bench/ManyFiles.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QEvent>
#include <QProcess>
#include <QTimer>

#include <atomic>
#include <fstream>
#include <optional>
#include <span>
#include <string_view>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tw::bench {
namespace {

using Seconds = std::chrono::duration<double>;
using Time = std::chrono::steady_clock::time_point;

Time now()
{
    return std::chrono::steady_clock::now();
}

/// Of all threads of this process.
double processorSeconds()
{
    rusage use{};
    ::getrusage(RUSAGE_SELF, &use);
    auto const seconds = [](timeval const &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(use.ru_utime) + seconds(use.ru_stime);
}

/// The other program: makes so many files a second, for so many seconds.
int write(std::string const &folder, int filesASecond, int seconds)
{
    auto const begin = now();
    for (int number = 0; number < filesASecond * seconds; ++number) {
        std::this_thread::sleep_until(begin + Seconds(double(number) / filesASecond));
        auto const file =
            ::open((folder + "/new " + std::to_string(number)).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        if (file < 0 || ::write(file, "x", 1) != 1 || ::close(file) != 0)
            return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

/// Presses a key in a pane a hundred times a second, and notes how long after it the key was handled.
class HeldKey {
public:
    HeldKey(std::shared_ptr<Executor> executor, PaneController &of)
        : main(std::move(executor)), pane(of), presses([this](std::stop_token const &stop) { press(stop); })
    {
    }

    /// The longest of a second, in milliseconds: the median of all seconds. A virtual machine whose processor is lent
    /// to others stands still now and then for longer than any key waits for us.
    double longest()
    {
        presses.request_stop();
        presses.join();
        while (handled < pressed)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        std::vector<double> longestOfSeconds;
        for (std::size_t from = 0; from + pressesASecond <= times.size(); from += pressesASecond)
            longestOfSeconds.push_back(std::ranges::max(std::span(times).subspan(from, pressesASecond)));
        return median(std::move(longestOfSeconds));
    }

private:
    static constexpr std::size_t pressesASecond = 100;

    void press(std::stop_token const &stop)
    {
        for (auto next = now(); !stop.stop_requested(); next += std::chrono::milliseconds(1000) / pressesASecond) {
            std::this_thread::sleep_until(next);
            ++pressed;
            main->post([this, next] {
                pane.handleKey({.key = Key::down, .text = {}});
                times.push_back(std::chrono::duration<double, std::milli>(now() - next).count());
                ++handled;
            });
        }
    }

    std::shared_ptr<Executor> const main;
    PaneController &pane;
    std::vector<double> times;
    std::atomic<int> pressed = 0;
    int handled = 0;
    std::jthread presses;
};

class Bench final : public QObject {
public:
    Bench() { window.window.pane(PaneSide::left).table().viewport()->installEventFilter(this); }

    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        if (!isPainted && event->type() == QEvent::Paint && pane.model().rowForName(awaited))
            isPainted = true;
        return false;
    }

    void show(ManyFiles const &folder)
    {
        pane.navigate(folder.path());
        until([&] { return pane.pathOnShow() == folder.path(); });
        wait(std::chrono::milliseconds(1500)); // the kernel's events of the files that were made for this are over
    }

    /// Milliseconds from a new file to its painted row.
    double change(ManyFiles const &folder)
    {
        awaited = "a new file " + std::to_string(++files);
        isPainted = false;
        auto const time = millisecondsOf([&] {
            std::ofstream(folder.path() + '/' + awaited) << 'x';
            until([&] { return isPainted; });
        });
        wait(std::chrono::milliseconds(500));
        return time;
    }

    struct Load {
        double processor = 0; ///< share of a core
        double longestKey = 0;
        double firstShown = 0; ///< milliseconds after the first file
        int listings = 0;
    };

    /// A held key has its own painting; the load without it is that of watching.
    enum class Keys { none, held };

    Load underChanges(ManyFiles const &folder, int filesASecond, int seconds, Keys keys)
    {
        show(folder);
        pane.handleKey({.key = Key::home, .text = {}});
        Load load;
        auto const reset = connect(window.window.pane(PaneSide::left).table().model(), &QAbstractItemModel::modelReset,
                                   this, [&] { ++load.listings; });
        auto const processorBefore = processorSeconds();
        auto const begin = now();
        std::optional<HeldKey> key;
        if (keys == Keys::held)
            key.emplace(main(), pane);
        QProcess writer;
        writer.start(QCoreApplication::applicationFilePath(),
                     {QStringLiteral("--write"), QString::fromStdString(folder.path()), QString::number(filesASecond),
                      QString::number(seconds)});
        std::optional<Time> first;
        std::optional<Time> shown;
        auto const rows = pane.model().rowCount();
        until([&] {
            if (!first && ::access((folder.path() + "/new 0").c_str(), F_OK) == 0)
                first = now();
            if (!shown && pane.model().rowCount() > rows)
                shown = now();
            return writer.state() == QProcess::NotRunning && first && shown;
        });
        load.firstShown = std::chrono::duration<double, std::milli>(*shown - *first).count();
        load.processor = (processorSeconds() - processorBefore) / Seconds(now() - begin).count();
        if (key)
            load.longestKey = key->longest();
        disconnect(reset);
        return load;
    }

private:
    template <class Condition>
    void until(Condition const &condition)
    {
        QTimer tick;
        tick.start(10);
        while (!condition())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void wait(std::chrono::milliseconds time)
    {
        until([end = now() + time] { return now() >= end; });
    }

    std::shared_ptr<Executor> main() { return window.executor(); }

    BenchWindow window;
    PaneController &pane = window.leftPane();
    std::string awaited;
    bool isPainted = false;
    int files = 0;
};

/// 0.3 s of quiet, the reading and the painting.
constexpr double changeMilliseconds = 350;
/// The first listing of a folder that does not come to rest: one second, and the reading.
constexpr double firstMilliseconds = 1100;
constexpr double mostProcessor = 0.25;
constexpr double keyMilliseconds = 10;

/// A folder that changes all the time: what watching it costs, and then how a key fares.
Bench::Load measure(Figures &figures, Bench &bench, std::string const &subject, int files, int filesASecond)
{
    constexpr int seconds = 10;
    auto load = [&] {
        ManyFiles const folder(files);
        return bench.underChanges(folder, filesASecond, seconds, Bench::Keys::none);
    }();
    ManyFiles const folder(files);
    load.longestKey = bench.underChanges(folder, filesASecond, seconds, Bench::Keys::held).longestKey;
    using enum Figures::Yardstick;
    figures.report(subject + ", share of a core", load.processor, limit, mostProcessor, "cores", 1.0);
    figures.report(subject + ", the longest wait for a key in a second", load.longestKey, limit, keyMilliseconds, "ms",
                   1.0);
    figures.report(subject + ", listings", load.listings, limit, double(seconds) / 0.3, "listings", 1.0);
    return load;
}

int run()
{
    ManyFiles const many(10'000);
    Bench bench;
    Figures figures;

    bench.show(many);
    std::vector<double> changes;
    for (int change = 0; change < 7; ++change)
        changes.push_back(bench.change(many));
    figures.report("a change to its painted row, 10,000 entries", median(std::move(changes)), Figures::Yardstick::limit,
                   changeMilliseconds, "ms", 1.0);

    auto const storm = measure(figures, bench, "10,000 new files a second", 1, 10'000);
    figures.report("10,000 new files a second, until the first are shown", storm.firstShown, Figures::Yardstick::limit,
                   firstMilliseconds, "ms", 1.0);
    measure(figures, bench, "100,000 entries and one more a second", 100'000, 1);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main(int argc, char **argv)
{
    if (argc == 5 && std::string_view(argv[1]) == "--write")
        return tw::bench::write(argv[2], std::stoi(argv[3]), std::stoi(argv[4]));
    QApplication const application(argc, argv);
    return tw::bench::run();
}
