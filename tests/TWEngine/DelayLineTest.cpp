#include "tests/hosts/DelayLine.h"

#include <gtest/gtest.h>

namespace tw::test {

using namespace std::chrono_literals;

namespace {

constexpr DelayLine::Time start{1h};

TEST(DelayLineTest, anEmptyLineHasNothingDue)
{
    DelayLine const line;

    EXPECT_FALSE(line.due());
    EXPECT_EQ(line.front(), "");
    EXPECT_FALSE(line.ending());
}

TEST(DelayLineTest, piecesArriveInTheirOrderEachAtItsTime)
{
    DelayLine line;
    line.put("first", start);
    line.put("second", start + 1s);

    EXPECT_EQ(line.due(), start);
    EXPECT_EQ(line.front(), "first");
    line.drop(5);
    EXPECT_EQ(line.due(), start + 1s);
    EXPECT_EQ(line.front(), "second");
}

TEST(DelayLineTest, nothingOvertakesWhatWasPutBefore)
{
    DelayLine line;
    line.put("slow", start + 1s);
    line.put("fast", start);
    line.end(Ending::orderly, start);
    line.drop(4);

    EXPECT_EQ(line.due(), start + 1s);
    EXPECT_EQ(line.front(), "fast");
}

TEST(DelayLineTest, aPieceCanBeDeliveredInParts)
{
    DelayLine line;
    line.put("bytes", start);
    line.drop(2);

    EXPECT_EQ(line.front(), "tes");
}

TEST(DelayLineTest, theEndComesBehindTheBytes)
{
    DelayLine line;
    line.put("last words", start);
    line.end(Ending::orderly, start + 1s);

    EXPECT_EQ(line.ending(), Ending::orderly);
    EXPECT_EQ(line.due(), start);
    line.drop(line.front().size());
    EXPECT_EQ(line.due(), start + 1s);
    EXPECT_EQ(line.front(), "");
}

TEST(DelayLineTest, nothingFollowsAnEndButAReset)
{
    DelayLine line;
    line.end(Ending::orderly, start);
    line.put("too late", start);
    line.end(Ending::reset, start);
    line.end(Ending::orderly, start);

    EXPECT_EQ(line.front(), "");
    EXPECT_EQ(line.ending(), Ending::reset);
}

TEST(DelayLineTest, itIsFullAtItsCapacityUntilSomethingIsDelivered)
{
    DelayLine line;
    line.put(std::string(DelayLine::capacity - 1, 'x'), start);
    EXPECT_FALSE(line.isFull());
    line.put("x", start);
    EXPECT_TRUE(line.isFull());
    line.drop(1);
    EXPECT_FALSE(line.isFull());
}

} // namespace

} // namespace tw::test
