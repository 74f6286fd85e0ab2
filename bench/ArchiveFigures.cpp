// What it costs to read the listing of an archive of a million members, and to make folders of it.

#include "TWCore/Archives/ArchiveListing.h"
#include "TWCore/Archives/ArchiveTree.h"
#include "bench/Figure.h"

#include <optional>

#include <malloc.h>

namespace tw::bench {
namespace {

constexpr int members = 1'000'000;
constexpr int membersOfAFolder = 100;
constexpr int runs = 3;

constexpr double parseMegabytesPerSecond = 150;
constexpr double buildMilliseconds = 1500;

/// Beside the folders: the tables that they are made with must be gone.
constexpr double largestMemoryRatio = 1.5;

std::string listingOfGnuTar()
{
    std::string text;
    for (int index = 0; index < members; ++index) {
        char line[160];
        auto const folder = index / membersOfAFolder;
        std::snprintf(line, sizeof line,
                      "-rw-r--r-- user/users %9d 2024-01-%02d 12:34 project/part%02d/folder%05d/"
                      "file %07d.cpp\n",
                      index, 1 + index % 28, folder % 50, folder, index);
        text += line;
    }
    return text;
}

double heldBytes()
{
    return static_cast<double>(::mallinfo2().uordblks + ::mallinfo2().hblkhd);
}

double bytesOf(Listings const &folders)
{
    double bytes = static_cast<double>(folders.begin()->second.storage()->size());
    for (auto const &[path, listing] : folders)
        bytes += static_cast<double>(listing.count() * sizeof(Entry) + 2 * path.size() + sizeof listing);
    return bytes;
}

void reportAll(Figures &figures)
{
    auto const text = listingOfGnuTar();
    auto const megabytes = static_cast<double>(text.size()) / 1e6;
    std::vector<double> parsing;
    std::vector<double> building;
    double memory = 0;
    double needed = 0;
    for (int run = 0; run < runs; ++run) {
        std::vector<ArchiveEntry> entries;
        parsing.push_back(busyMillisecondsOf([&] { entries = ArchiveListing::parseTar(text); }));
        auto const before = heldBytes();
        std::optional<ArchiveTree> tree;
        building.push_back(busyMillisecondsOf([&] { tree = ArchiveTree::build(entries, {}); }));
        memory = heldBytes() - before;
        needed = bytesOf(tree->folders);
    }
    figures.report("tar listing of 1,000,000 members, parsing", median(parsing), Figures::Yardstick::limit,
                   megabytes / parseMegabytesPerSecond * 1000, "ms", 1);
    figures.report("folders of 1,000,000 members, building", median(building), Figures::Yardstick::limit,
                   buildMilliseconds, "ms", 1);
    figures.report("folders of 1,000,000 members, memory", memory / 1e6, Figures::Yardstick::peer, needed / 1e6, "MB",
                   largestMemoryRatio);
}

} // namespace
} // namespace tw::bench

int main()
{
    tw::bench::Figures figures;
    tw::bench::reportAll(figures);
    return figures.exitCode();
}
