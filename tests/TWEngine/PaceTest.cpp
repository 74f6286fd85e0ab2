#include "TWEngine/Shell/Pace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

namespace tw::test {
namespace {

using namespace std::chrono_literals;

/// A line of that speed and round trip, over which a host sends what it is granted.
class PaceTest : public ::testing::Test {
protected:
    struct Outcome {
        std::size_t mostInFlight = 0;
        std::size_t grants = 0;
        double bytesPerSecond = 0;
        std::chrono::milliseconds idle{0}; ///< how long the host waited for grants
    };

    /// How what has arrived is passed on to us.
    struct Client {
        std::size_t piece = 1;
        std::chrono::milliseconds heldUp{0}; ///< after every third piece
        bool inHalves = false;               ///< a whole piece is read twice, a millisecond apart
    };

    Outcome send(std::size_t total, double bytesPerSecond, std::chrono::milliseconds roundTrip, LineSpeed const &known,
                 Client client = {1, {}, false})
    {
        Pace pace(known, Pace::Time());

        struct Grant {
            std::size_t bytes;
            std::chrono::milliseconds at;
        };

        std::deque<Grant> onTheirWay{{pace.first(), roundTrip}};
        Outcome outcome;
        std::size_t allowed = 0;
        std::size_t granted = pace.first();
        double carried = 0;
        std::size_t passedOn = 0;
        int pieces = 0;
        auto heldUpUntil = 0ms;
        auto now = 0ms;
        for (; carried < static_cast<double>(total) && now < 1h; now += 1ms) {
            while (!onTheirWay.empty() && onTheirWay.front().at <= now) {
                allowed += onTheirWay.front().bytes;
                onTheirWay.pop_front();
            }
            carried =
                std::min({carried + bytesPerSecond / 1000, static_cast<double>(allowed), static_cast<double>(total)});
            auto const arrived = static_cast<std::size_t>(carried);
            if (arrived == allowed && arrived > 0 && arrived < total)
                outcome.idle += 1ms;
            auto const wholePieces = arrived == granted ? arrived : arrived / client.piece * client.piece;
            if (now >= heldUpUntil && wholePieces > passedOn) {
                bool const isFirstHalf = client.inHalves && wholePieces - passedOn > client.piece / 2;
                passedOn = isFirstHalf ? wholePieces - client.piece / 2 : wholePieces;
                if (!isFirstHalf)
                    heldUpUntil = ++pieces % 3 == 0 ? now + client.heldUp : now;
            }
            outcome.mostInFlight = std::max(outcome.mostInFlight, granted - std::min(granted, arrived));
            if (auto const more = pace.arrived(passedOn, Pace::Time(now)); more > 0) {
                granted += more;
                onTheirWay.push_back({more, now + roundTrip});
                ++outcome.grants;
            }
        }
        outcome.bytesPerSecond = static_cast<double>(total) / std::chrono::duration<double>(now).count();
        return outcome;
    }

    static LineSpeed lineWithRoundTrip(std::chrono::milliseconds roundTrip)
    {
        LineSpeed line;
        line.note(100, roundTrip);
        return line;
    }
};

TEST_F(PaceTest, aNarrowLineIsFilledAndAFifthOfASecondWaitsAtMost)
{
    auto const speed = 250e3; // 2 Mbit/s
    auto const outcome = send(6'000'000, speed, 50ms, lineWithRoundTrip(50ms));
    EXPECT_LT(static_cast<double>(outcome.mostInFlight), speed * 0.22);
    EXPECT_GT(outcome.bytesPerSecond, speed * 0.95);
}

TEST_F(PaceTest, howTheClientPassesPiecesOnMakesANarrowLineNoFasterOne)
{
    auto const speed = 250e3;
    for (auto const &known : {LineSpeed(), lineWithRoundTrip(50ms)})
        for (std::size_t const piece : {1'400U, 16'384U, 32'768U})
            for (auto const heldUp : {0ms, 45ms, 100ms})
                for (bool const inHalves : {false, true}) {
                    auto const outcome = send(6'000'000, speed, 50ms, known, {piece, heldUp, inHalves});
                    auto const how = std::to_string(piece) + " held up " + std::to_string(heldUp.count());
                    EXPECT_LT(static_cast<double>(outcome.mostInFlight), speed * 0.28) << how << inHalves;
                    EXPECT_GT(outcome.bytesPerSecond, speed * 0.8) << how << inHalves;
                }
}

TEST_F(PaceTest, aFastLineIsFilledSoonAndWithFewGrants)
{
    auto const outcome = send(40'000'000, 30e6, 50ms, lineWithRoundTrip(50ms));
    EXPECT_GT(outcome.bytesPerSecond, 30e6 * 0.75);
    EXPECT_LE(outcome.mostInFlight, Pace::largestWindow);
    EXPECT_LT(outcome.grants, 60U);
}

TEST_F(PaceTest, aFastLineIsFullAfterTwoRoundTrips)
{
    for (auto known : {LineSpeed(), lineWithRoundTrip(50ms)}) {
        known.note(LineSpeed::leastRoom, 110ms); // the first answer, most of which was the work of the host
        EXPECT_LE(send(30'000'000, 25e6, 50ms, known).idle, 2 * 50ms);
    }
}

TEST_F(PaceTest, aLineWhoseRoundTripIsNotKnownIsFilledTooInTheEnd)
{
    auto const outcome = send(40'000'000, 10e6, 200ms, {});
    EXPECT_GT(outcome.bytesPerSecond, 10e6 * 0.5);
}

TEST_F(PaceTest, aFastLineOfTheLastAnswerNeedsNoFindingOut)
{
    LineSpeed line = lineWithRoundTrip(50ms);
    line.note(1U << 20U, 100ms);
    EXPECT_GT(Pace(line, {}).first(), 4U << 20U >> 1U);
    EXPECT_EQ(Pace({}, {}).first(), LineSpeed::leastRoom);
}

TEST_F(PaceTest, whatArrivesAgainFromTheStartIsNoSpeed)
{
    Pace pace({}, Pace::Time());
    EXPECT_EQ(pace.arrived(1000, Pace::Time(100ms)), 0U);
    EXPECT_EQ(pace.arrived(500, Pace::Time(200ms)), 0U);
}

} // namespace
} // namespace tw::test
