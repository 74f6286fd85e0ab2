#include "TWEngine/Runtime/UpdateStream.h"

#include "TWCore/Async/OnExecutor.h"
#include "TWEngine/Runtime/WorkerPool.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <latch>
#include <thread>

namespace tw::test {
namespace {

constexpr int races = 300;

using Stream = UpdateStream<int>;
using Sender = Stream::Sender;

class UpdateStreamTest : public ::testing::Test {
protected:
    UpdateStreamTest()
    {
        auto ends = Stream::make([this] { ++dropped; });
        sender.emplace(std::move(ends.sender));
        stream.emplace(std::move(ends.stream));
    }

    Started<std::optional<int>> startNext()
    {
        auto started = loop.start(stream->next());
        loop.drain();
        return started;
    }

    int dropped = 0;
    std::optional<Sender> sender;
    std::optional<Stream> stream;
    TestLoop loop;
};

/// Says goodbye through its sender.
struct Owner {
    std::optional<Sender> sender;

    ~Owner()
    {
        sender->send(1);
        sender->finish();
    }
};

/// Everything that a stream still gives, and the stream itself goes with the frame.
Task<std::vector<int>> restOf(Stream stream)
{
    std::vector<int> values;
    for (;;) {
        auto const value = co_await stream.next();
        if (!value)
            co_return values;
        values.push_back(*value);
    }
}

TEST_F(UpdateStreamTest, valuesAreReceivedInTheOrderOfTheirSending)
{
    sender->send(1);
    sender->send(2);
    EXPECT_EQ(startNext().value(), 1);
    EXPECT_EQ(startNext().value(), 2);
}

TEST_F(UpdateStreamTest, aWaitingReceiverGoesOnWithTheNextValue)
{
    auto const next = startNext();
    EXPECT_FALSE(next.isDone());
    sender->send(1);
    loop.drain();

    EXPECT_EQ(next.value(), 1);
}

TEST_F(UpdateStreamTest, whatWasSentBeforeTheEndIsReceivedBeforeIt)
{
    sender->send(1);
    sender->send(2);
    sender->finish();
    sender->send(3);

    EXPECT_EQ(loop.run(restOf(std::move(*stream))), (std::vector{1, 2}));
}

TEST_F(UpdateStreamTest, aWaitingReceiverIsToldOfTheEnd)
{
    auto const next = startNext();
    sender->finish();
    loop.drain();

    EXPECT_EQ(next.value(), std::nullopt);
    EXPECT_EQ(startNext().value(), std::nullopt) << "the end stays the end";
}

TEST_F(UpdateStreamTest, theLastSenderThatGoesEndsTheStream)
{
    auto copy = sender;
    auto const next = startNext();
    sender.reset();
    loop.drain();
    EXPECT_FALSE(next.isDone());

    copy->send(1);
    copy.reset();
    loop.drain();
    EXPECT_EQ(next.value(), 1);
    EXPECT_EQ(startNext().value(), std::nullopt);
}

TEST_F(UpdateStreamTest, theSenderIsToldOnceThatNobodyReceivesAnyMore)
{
    sender->send(1);
    stream.reset();
    EXPECT_EQ(dropped, 1);

    sender->send(2);
    sender->finish();
    sender.reset();
    EXPECT_EQ(dropped, 1);
}

TEST_F(UpdateStreamTest, aSenderThatHasFinishedIsNotToldThatNobodyReceives)
{
    sender->finish();
    stream.reset();
    EXPECT_EQ(dropped, 0);
}

TEST_F(UpdateStreamTest, aStreamThatWasMovedIsStillOneStream)
{
    {
        auto moved = std::move(*stream);
        stream.reset();
        EXPECT_EQ(dropped, 0);
    }
    EXPECT_EQ(dropped, 1);
}

TEST_F(UpdateStreamTest, valuesThatNobodyReceivedAreFreedWithTheStream)
{
    auto const value = std::make_shared<int>();
    auto ends = UpdateStream<std::shared_ptr<int>>::make([] {});
    ends.sender.send(value);
    {
        auto const goes = std::move(ends.stream);
        EXPECT_EQ(value.use_count(), 2);
    }
    EXPECT_EQ(value.use_count(), 1);
    ends.sender.send(value);
    EXPECT_EQ(value.use_count(), 1);
}

TEST_F(UpdateStreamTest, aReceiverThatIsStoppedLosesNothing)
{
    auto const stopped = startNext();
    stopped.stop();
    loop.drain();
    EXPECT_THROW(stopped.value(), Cancelled);

    sender->send(1);
    EXPECT_EQ(startNext().value(), 1);
}

TEST_F(UpdateStreamTest, aReceiverThatWasStoppedBeforeItAwaitsLosesNothing)
{
    auto const stopped = loop.start(stream->next());
    stopped.stop();
    loop.drain();
    EXPECT_THROW(stopped.value(), Cancelled);

    sender->send(1);
    EXPECT_EQ(startNext().value(), 1);
}

TEST_F(UpdateStreamTest, aReceiverThatStillWaitsWhenTheStreamIsDroppedIsToldOfTheEnd)
{
    auto const next = startNext();
    stream.reset();
    loop.drain();

    EXPECT_EQ(next.value(), std::nullopt);
    EXPECT_EQ(dropped, 1);
}

TEST_F(UpdateStreamTest, whatTheCallbackHoldsMayUseTheStreamWhenItIsLetGo)
{
    auto owner = std::make_shared<Owner>();
    auto ends = Stream::make([owner] {});
    owner->sender = ends.sender;
    owner.reset();
    ends.sender.finish(); // hung, when the callback was destroyed with the stream locked

    EXPECT_EQ(loop.run(restOf(std::move(ends.stream))), std::vector<int>());
}

TEST_F(UpdateStreamTest, nothingIsLostBetweenTwoThreads)
{
    constexpr int count = 20'000;
    auto receiver = loop.start(restOf(std::move(*stream)));
    std::jthread const sending([from = std::move(*sender)] {
        for (int value = 0; value < count; ++value)
            from.send(value);
        from.finish();
    });
    sender.reset();
    ASSERT_TRUE(loop.runUntil([&] { return receiver.isDone(); }));

    auto const values = receiver.value();
    ASSERT_EQ(values.size(), std::size_t{count});
    for (int value = 0; value < count; ++value)
        EXPECT_EQ(values[static_cast<std::size_t>(value)], value);
}

TEST_F(UpdateStreamTest, aStopAtTheMomentOfASendLosesNothing)
{
    WorkerPool const pool({.interactive = 2, .background = 1});
    for (int round = 0; round < races; ++round) {
        auto ends = Stream::make([] {});
        auto const raced = std::make_shared<Stream>(std::move(ends.stream));
        auto const next = loop.start(onExecutor(pool.executor(WorkPriority::interactive), raced->next()));
        {
            std::latch ready(3);
            std::jthread const sending([&] {
                ready.arrive_and_wait();
                ends.sender.send(7);
            });
            std::jthread const stopping([&] {
                ready.arrive_and_wait();
                next.stop();
            });
            ready.arrive_and_wait();
            ASSERT_TRUE(loop.runUntil([&] { return next.isDone(); }));
        }
        if (next.failed())
            EXPECT_EQ(loop.run(raced->next()), 7);
        else
            EXPECT_EQ(next.value(), 7);
    }
}

} // namespace
} // namespace tw::test
