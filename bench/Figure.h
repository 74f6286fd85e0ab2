#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

namespace tw::bench {

/// How long `work` takes, in milliseconds.
template <class Work>
double millisecondsOf(Work const &work)
{
    auto const start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// How long `work` keeps this thread busy, in milliseconds: without what other programs do meanwhile.
template <class Work>
double busyMillisecondsOf(Work const &work)
{
    auto const now = [] {
        timespec time{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    auto const start = now();
    work();
    return std::chrono::duration<double, std::milli>(now() - start).count();
}

/// Makes the compiler believe that `value` is looked at, so that what computed it is not left out.
template <class T>
void keep(T const &value)
{
    asm volatile("" : : "g"(&value) : "memory");
}

inline double median(std::vector<double> values)
{
    auto const middle = values.begin() + std::ssize(values) / 2;
    std::ranges::nth_element(values, middle);
    return *middle;
}

struct Medians {
    double subject = 0;
    double peer = 0;
};

/// The medians of several runs of two measurements, which take turns: whatever else the machine does meanwhile hits
/// both alike. Each answers what it measured; a first turn only warms up. When they have taken `enough` time, three
/// runs will do.
template <class Subject, class Peer>
Medians takeTurns(int runs, Subject subject, Peer peer, std::chrono::seconds enough = std::chrono::hours(1))
{
    constexpr int leastRuns = 3;
    auto const until = std::chrono::steady_clock::now() + enough;
    std::vector<double> ofSubject;
    std::vector<double> ofPeer;
    for (int run = -1; run < runs; ++run) {
        if (run >= leastRuns && std::chrono::steady_clock::now() > until)
            break;
        auto const subjectValue = subject();
        auto const peerValue = peer();
        if (run < 0)
            continue;
        ofSubject.push_back(subjectValue);
        ofPeer.push_back(peerValue);
    }
    return {median(std::move(ofSubject)), median(std::move(ofPeer))};
}

/// The figures of one program: a line for each, and an exit code over all.
class Figures {
public:
    /// What a measured value is held against.
    enum class Yardstick { peer, limit };

    /// Prints how `measured` stands to `yardstickValue`; missed if their ratio is above `largestRatio`.
    void report(std::string const &name, double measured, Yardstick yardstick, double yardstickValue,
                std::string const &unit, double largestRatio)
    {
        auto const ratio = measured / yardstickValue;
        bool const isMet = ratio <= largestRatio; // false for what is not a number
        std::printf("%s: measured %.3f %s, %s %.3f %s, ratio %.3f, limit %.3f: %s\n", name.c_str(), measured,
                    unit.c_str(), yardstick == Yardstick::peer ? "peer" : "limit", yardstickValue, unit.c_str(), ratio,
                    largestRatio, isMet ? "ok" : "MISSED");
        std::fflush(stdout);
        missed += isMet ? 0 : 1;
    }

    int exitCode() const { return missed == 0 ? 0 : 1; }

private:
    int missed = 0;
};

} // namespace tw::bench
