// What the bytes of a host cost on this side of the link: to find the responses in them, and to make listings of them.

#include "TWCore/Model/ListingParser.h"
#include "TWEngine/Shell/ShellReader.h"
#include "bench/Figure.h"

#include <cstring>
#include <stdexcept>

#include <time.h>

namespace tw::bench {
namespace {

constexpr std::size_t mebibyte = 1U << 20U;
constexpr std::size_t kibibyte = 1U << 10U;
constexpr int runs = 15;

/// The response budget of a session: no listing is longer.
constexpr std::size_t listingBytes = 8 * mebibyte;

/// A person waits for the pane behind this; at 500 MB/s the longest listing there is takes less than a frame or two.
constexpr double slowestParseBytesPerSecond = 500e6;

/// How much more there is to a record than to find its end: five fields, and an entry of 32 bytes; in a tree its
/// folder.
constexpr double largestFolderRatio = 12;
constexpr double largestTreeRatio = 18;

/// What one read of a pipe brings.
constexpr std::size_t pieceBytes = 64 * kibibyte;

constexpr std::size_t streamBytes = 64 * mebibyte;
constexpr double slowestReadBytesPerSecond = 2e9;

/// Twice the bytes may take twice the time, and a little for what caches do not hold any more.
constexpr double largestGrowth = 1.15;

constexpr std::string_view nonce = "0123456789abcdef";
constexpr std::chrono::system_clock::time_point fetchedAt{std::chrono::seconds(1'700'000'000)};

/// The time that this thread computes in `work`. None of it waits for anything, so what else the machine does meanwhile
/// is no part of its cost.
template <class Work>
double processorMillisecondsOf(Work const &work)
{
    auto const now = [] {
        timespec time;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    };
    auto const start = now();
    work();
    return now() - start;
}

double millisecondsAt(double bytesPerSecond, std::size_t bytes)
{
    return static_cast<double>(bytes) / bytesPerSecond * 1000;
}

/// What `find` prints of a tree of sources: folders of some files and some folders, four levels deep.
std::string treeListing(std::size_t bytes)
{
    std::string stream;
    std::size_t count = 0;
    auto const add = [&](char type, std::string const &path) {
        char record[512];
        auto const length =
            std::snprintf(record, sizeof record, "%c\t%zu\t17%08zu.%010zu\t%s\t%s", type, count * 7919 % 250'000,
                          count * 104'729 % 100'000'000, count * 15'485'863 % 10'000'000'000,
                          type == 'd' ? "755" : "644", path.c_str());
        stream.append(record, static_cast<std::size_t>(length) + 1); // with the NUL that ends the record
        ++count;
    };
    auto const fill = [&](auto const &self, std::string const &folder, int depth) -> void {
        for (int file = 0; file < 14 && stream.size() < bytes; ++file)
            add('f', folder + "source file " + std::to_string(count) + ".cpp");
        for (int child = 0; child < 12 && depth > 1 && stream.size() < bytes; ++child) {
            auto const path = folder + "module " + std::to_string(child);
            add('d', path);
            self(self, path + '/', depth - 1);
        }
    };
    for (int part = 0; stream.size() < bytes; ++part)
        fill(fill, "part" + std::to_string(part) + '/', 4);
    stream.resize(bytes);
    return stream;
}

/// The same records, all of them files of one folder.
std::string flatListing(std::size_t bytes)
{
    auto stream = treeListing(bytes);
    std::ranges::replace(stream, '/', '_');
    for (auto end = stream.find('\0'); end + 1 < stream.size() && end != std::string::npos;
         end = stream.find('\0', end + 1))
        stream[end + 1] = 'f';
    return stream;
}

std::size_t countEnds(std::string_view stream)
{
    std::size_t count = 0;
    while (auto const *const end = static_cast<char const *>(std::memchr(stream.data(), '\0', stream.size()))) {
        ++count;
        stream.remove_prefix(static_cast<std::size_t>(end - stream.data()) + 1);
    }
    return count;
}

void measureParse(Figures &figures, std::string const &subject, std::string stream, double largestPeerRatio)
{
    auto const response = std::make_shared<std::string const>(std::move(stream));
    auto const records = countEnds(*response);
    auto const parse = [&] {
        std::map<std::string, DirectorySnapshot> listings;
        auto const time = processorMillisecondsOf([&] {
            listings = ListingParser::parse(response, "/srv", 4, fetchedAt, ListingParser::Completeness::truncated);
        });
        std::size_t entries = 0;
        for (auto const &[path, listing] : listings)
            entries += listing.count();
        if (entries != records)
            throw std::runtime_error("the listing is not whole");
        return time;
    };
    auto const medians =
        takeTurns(runs, parse, [&] { return processorMillisecondsOf([&] { keep(countEnds(*response)); }); });
    figures.report("parse of 8 MiB, " + subject, medians.subject, Figures::Yardstick::limit,
                   millisecondsAt(slowestParseBytesPerSecond, listingBytes), "ms", 1.0);
    figures.report("parse of 8 MiB, " + subject + ", beside a search for the ends of the records", medians.subject,
                   Figures::Yardstick::peer, medians.peer, "ms", largestPeerRatio);
}

/// A stream of responses of that size, whose payloads are listings.
std::string responses(std::size_t bytes, std::size_t payloadBytes)
{
    auto const payload = treeListing(payloadBytes);
    std::string stream;
    stream.reserve(bytes + bytes / 2);
    for (std::uint64_t id = 1; stream.size() < bytes; ++id)
        stream.append(payload).append("@@TW").append(nonce).append(":" + std::to_string(id) + ":0@@\n");
    return stream;
}

double readTime(std::string const &stream, std::size_t piece)
{
    ShellReader reader(nonce, listingBytes);
    return processorMillisecondsOf([&] {
        for (std::string_view rest = stream; !rest.empty(); rest.remove_prefix(std::min(piece, rest.size()))) {
            for (auto const &frame : reader.ingest(rest.substr(0, piece)))
                keep(frame.payload.size());
        }
    });
}

/// That the time grows as the bytes do. `piece` is how many of them come at once.
void measureGrowth(Figures &figures, std::string const &subject, std::size_t payloadBytes, std::size_t piece)
{
    auto const whole = responses(streamBytes, payloadBytes);
    auto const half = responses(streamBytes / 2, payloadBytes);
    auto const medians =
        takeTurns(runs, [&] { return readTime(whole, piece); }, [&] { return 2 * readTime(half, piece); });
    figures.report("reading of 64 MiB, " + subject + ", beside twice that of 32 MiB", medians.subject,
                   Figures::Yardstick::peer, medians.peer, "ms", largestGrowth);
}

void measureRead(Figures &figures, std::string const &subject, std::size_t payloadBytes)
{
    auto const stream = responses(streamBytes, payloadBytes);
    std::vector<double> times;
    for (int run = 0; run < runs; ++run)
        times.push_back(readTime(stream, pieceBytes));
    figures.report("reading of 64 MiB in pieces of 64 KiB, " + subject, median(std::move(times)),
                   Figures::Yardstick::limit, millisecondsAt(slowestReadBytesPerSecond, stream.size()), "ms", 1.0);
    measureGrowth(figures, subject, payloadBytes, pieceBytes);
}

int measureAll()
{
    Figures figures;
    measureParse(figures, "a tree", treeListing(listingBytes), largestTreeRatio);
    measureParse(figures, "one folder", flatListing(listingBytes), largestFolderRatio);
    measureRead(figures, "the longest listings", listingBytes);
    measureRead(figures, "small listings", 4 * kibibyte);
    measureGrowth(figures, "small listings, all at once", 4 * kibibyte, streamBytes);
    return figures.exitCode();
}

} // namespace
} // namespace tw::bench

int main()
{
    return tw::bench::measureAll();
}
