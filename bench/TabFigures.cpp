// What a tab costs in memory beside the listing that all tabs on a folder share, in the program's own window.

#include "bench/BenchWindow.h"
#include "bench/Figure.h"
#include "bench/ManyFiles.h"

#include <QApplication>

#include <malloc.h>

namespace tw::bench {
namespace {

constexpr double mostKibibytes = 1024;

constexpr int measuredTabs = 20;

double kibibytesInUse()
{
    auto const use = ::mallinfo2();
    return static_cast<double>(use.uordblks + use.hblkhd) / 1024;
}

void waitForListing(PaneController const &pane, std::string const &path)
{
    while (!pane.model().snapshot() || pane.pathOnShow() != path)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::processEvents();
}

int run()
{
    ManyFiles const many(10'000);
    BenchWindow bench;
    auto &controller = bench.controller;
    controller.start({.left = PaneSpec{"local", many.path(), true}, .right = {}});
    waitForListing(bench.leftPane(), many.path());
    auto const openTab = [&] {
        controller.cmdNewTab();
        waitForListing(bench.leftPane(), many.path());
    };
    openTab(); // what the first one needs is not for each
    auto const before = kibibytesInUse();
    for (int count = 0; count < measuredTabs; ++count)
        openTab();
    Figures figures;
    figures.report("memory of one more tab on a folder of 10,000 entries", (kibibytesInUse() - before) / measuredTabs,
                   Figures::Yardstick::limit, mostKibibytes, "KiB", 1.0);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main(int argc, char **argv)
{
    QApplication const application(argc, argv);
    return tw::bench::run();
}
