#include "TWEngine/Transfer/PumpRest.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

using Time = PumpRest::Time;

constexpr std::size_t most = 1'000;

TEST(PumpRestTest, smallPiecesMakeItLongerAndLargeOnesEndIt)
{
    PumpRest rest;
    EXPECT_EQ(rest.after(most, most), Time(0));
    EXPECT_EQ(rest.after(10, most), Time(125));
    EXPECT_EQ(rest.after(10, most), Time(250));
    EXPECT_EQ(rest.after(most / 2, most), Time(250));
    for (int piece = 0; piece < 10; ++piece)
        rest.after(10, most);
    EXPECT_EQ(rest.after(10, most), PumpRest::longest);
    EXPECT_EQ(rest.after(most, most), PumpRest::longest / 2);
    for (int piece = 0; piece < 10; ++piece)
        rest.after(most, most);
    EXPECT_EQ(rest.after(most / 2, most), Time(0));
}

/// Programs that write and read at these speeds, with a pipe of 1 MiB on both sides.
TEST(PumpRestTest, noPipeRunsFullAndThePumpIsWokenSeldom)
{
    constexpr double pipe = 1 << 20;
    for (double const bytesPerSecond : {1e6, 50e6, 400e6}) {
        PumpRest rest;
        double waiting = 0;
        int pieces = 0;
        double held = 0; // seconds for which the writer had no room
        for (double time = 0; time < 1; ++pieces) {
            auto const piece = std::min(waiting, pipe);
            waiting -= piece;
            auto const pause = std::chrono::duration<double>(rest.after(static_cast<std::size_t>(piece), 1U << 20U));
            // Without a rest it is woken for each 10 KiB.
            auto const step = std::max(pause.count(), 10e3 / bytesPerSecond);
            waiting += bytesPerSecond * step;
            held += std::max(0.0, waiting - pipe) / bytesPerSecond;
            waiting = std::min(waiting, pipe);
            time += step;
        }
        EXPECT_LT(pieces, 1'100) << bytesPerSecond;
        EXPECT_LT(held, 0.01) << bytesPerSecond;
    }
}

} // namespace
} // namespace tw::test
