#include "TWEngine/Transfer/PipeEnding.h"

#include <gtest/gtest.h>

namespace tw::test {
namespace {

constexpr ExitStatus success{ExitStatus::Cause::exited, 0};
constexpr ExitStatus failed{ExitStatus::Cause::exited, 2};
constexpr ExitStatus brokenPipe{ExitStatus::Cause::killed, 13};

PipeEnding good()
{
    return {.producer = {.status = success}, .consumer = {.status = success}, .isWhole = true};
}

std::string textOf(PipeEnding const &ending)
{
    auto const failure = ending.failure();
    return failure ? failure->operation + ": " + failure->detail : "done";
}

TEST(PipeEndingTest, twoGoodProgramsAndAWholeArchiveAreDone)
{
    EXPECT_EQ(textOf(good()), "done");
}

TEST(PipeEndingTest, theProducerIsJudgedFirst)
{
    auto ending = good();
    ending.producer = {.status = failed, .words = "tar: x: Permission denied"};
    ending.consumer = {.status = failed, .words = "tar: Unexpected EOF"};
    EXPECT_EQ(textOf(ending), "read from this Mac: tar: x: Permission denied");
    ending.producer.isHere = false;
    EXPECT_EQ(textOf(ending), "read from remote: tar: x: Permission denied");
}

TEST(PipeEndingTest, aConsumerAloneIsJudgedByItsWords)
{
    auto ending = good();
    ending.consumer = {.status = failed, .words = "No space left on device"};
    EXPECT_EQ(textOf(ending), "write to this Mac: No space left on device");
    ending.consumer.isHere = false;
    EXPECT_EQ(textOf(ending), "write to remote: No space left on device");
}

TEST(PipeEndingTest, aDiskThatTookABlockInPartMayBeFull)
{
    auto ending = good();
    ending.consumer = {.status = failed, .words = "tar: b: Wrote only 6144 of 10240 bytes"};
    EXPECT_EQ(textOf(ending), "write to this Mac: tar: b: Wrote only 6144 of 10240 bytes\nThe disk may be full.");
    ending.consumer.words += "\ntar: c: Cannot write: No space left on device";
    EXPECT_EQ(textOf(ending), "write to this Mac: " + ending.consumer.words);
}

TEST(PipeEndingTest, aConnectionThatIsLostInSilenceIsCalledLost)
{
    auto ending = good();
    ending.producer = {.status = {ExitStatus::Cause::exited, 255}, .isHere = false};
    EXPECT_EQ(textOf(ending), "read from remote: exit 255: the connection was lost");
    ending.producer.isHere = true;
    EXPECT_EQ(textOf(ending), "read from this Mac: exit 255");
}

TEST(PipeEndingTest, aConsumerThatStoppedReadingIsTheCauseOfTheProducersEnd)
{
    auto ending = good();
    ending.isWhole = false;
    ending.couldNotWrite = true;
    ending.producer = {.status = brokenPipe};
    ending.consumer = {.status = failed, .words = "No space left on device"};
    EXPECT_EQ(textOf(ending), "write to this Mac: No space left on device");
    ending.consumer = {.status = success};
    EXPECT_EQ(textOf(ending), "write to this Mac: it ended before the archive");
}

TEST(PipeEndingTest, aConsumerNeedNotReadWhatIsBehindTheArchive)
{
    auto ending = good();
    ending.couldNotWrite = true;
    EXPECT_EQ(textOf(ending), "done");
}

TEST(PipeEndingTest, anArchiveWithoutItsEndIsNotWhole)
{
    auto ending = good();
    ending.isWhole = false;
    EXPECT_EQ(textOf(ending), "read from this Mac: the archive ended too early");
}

TEST(PipeEndingTest, aRefusedStreamSaysWhy)
{
    auto ending = good();
    ending.producer.isHere = false;
    ending.producer.status = brokenPipe;
    ending.refusal = "the host sent what was not asked for: x";
    EXPECT_EQ(textOf(ending), "read from remote: the host sent what was not asked for: x");
}

TEST(PipeEndingTest, aProgramWithoutWordsIsNamedByItsEnd)
{
    auto ending = good();
    ending.producer.status = failed;
    EXPECT_EQ(textOf(ending), "read from this Mac: exit 2");
    ending.producer.status = brokenPipe;
    EXPECT_EQ(textOf(ending), "read from this Mac: ended by signal 13");
}

} // namespace
} // namespace tw::test
