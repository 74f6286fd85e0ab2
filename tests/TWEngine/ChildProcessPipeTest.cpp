#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Runtime/WorkerPool.h"
#include "tests/support/ChildProcessTest.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <latch>
#include <thread>

#include <signal.h>

namespace tw::test {
namespace {

constexpr int pipeRaces = 300;

/// More than any pipe holds, so that a writer has to wait for its reader.
constexpr std::size_t severalMiB = std::size_t{5} * 1024 * 1024;

/// All byte values, in no pattern that a pipe's size divides.
std::string someBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    std::uint32_t state = 1;
    for (auto &byte : bytes) {
        state = state * 1'664'525 + 1'013'904'223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

Task<void> writeAndClose(ChildHandle child, std::string bytes)
{
    co_await child->write(std::move(bytes));
    child->closeInput();
}

/// What goes through the pipes of a child, and how waiting for them ends.
class ChildProcessPipeTest : public ChildProcessTest {
protected:
    int pipeErrorOf(Started<std::string> const &task)
    {
        loop.runUntil([&] { return task.isDone(); });
        try {
            task.value();
        } catch (PipeError const &error) {
            return error.errorNumber();
        }
        return 0;
    }

    void endOf(ChildHandle const &cat)
    {
        cat->closeInput();
        EXPECT_EQ(readAll(cat), "");
        EXPECT_EQ(wait(cat), exited(0));
    }
};

TEST_F(ChildProcessPipeTest, everyByteValueGoesThroughBothWaysAtOnce)
{
    auto const sent = someBytes(severalMiB);
    auto const cat = startCat();
    auto const writing = loop.start(writeAndClose(cat, sent));
    auto const received = readAll(cat);

    ASSERT_EQ(received.size(), sent.size());
    EXPECT_TRUE(received == sent);
    EXPECT_NO_THROW(writing.value());
    EXPECT_EQ(wait(cat), exited(0));
}

TEST_F(ChildProcessPipeTest, tasksOnThreadsOfTheirOwnReadAndWriteAtOnce)
{
    WorkerPool const pool({.interactive = 2, .background = 1});
    Strand const writer{pool.executor(WorkPriority::interactive)};
    Strand const reader{pool.executor(WorkPriority::interactive)};
    auto const sent = someBytes(severalMiB);
    auto const cat = startCat();
    auto const writing = loop.start(onStrand(writer, writeAndClose(cat, sent)));
    auto const received = loop.run(onStrand(reader, restOf(cat, ChildOutput::standard)));
    loop.runUntil([&] { return writing.isDone(); });

    ASSERT_EQ(received.size(), sent.size());
    EXPECT_TRUE(received == sent);
    EXPECT_EQ(wait(cat), exited(0));
}

TEST_F(ChildProcessPipeTest, aReadAnswersWhatIsThereAndDoesNotWaitForMore)
{
    auto const cat = startCat();
    loop.run(cat->write("some"));
    EXPECT_EQ(read(cat), "some");
    loop.run(cat->write("more"));
    EXPECT_EQ(read(cat), "more");
    endOf(cat);
}

TEST_F(ChildProcessPipeTest, theEndOfTheOutputStaysTheEnd)
{
    auto const child = startShell("echo last");
    EXPECT_EQ(readAll(child), "last\n");
    EXPECT_EQ(read(child), "");
    EXPECT_EQ(read(child), "");
    EXPECT_EQ(wait(child), exited(0));
}

TEST_F(ChildProcessPipeTest, aReadUsesTheMemoryItIsGiven)
{
    auto const cat = startCat();
    std::string buffer;
    buffer.reserve(5000);
    auto const *const memory = buffer.data();
    auto const capacity = buffer.capacity();
    loop.run(cat->write(std::string(10'000, 'x')));
    std::size_t count = 0;
    while (count < 10'000) {
        auto const reading = loop.start(cat->read(ChildOutput::standard, std::move(buffer)));
        loop.runUntil([&] { return reading.isDone(); });
        buffer = reading.take();
        EXPECT_EQ(buffer.data(), memory);
        EXPECT_LE(buffer.size(), capacity);
        count += buffer.size();
    }
    endOf(cat);
}

TEST_F(ChildProcessPipeTest, aWriteGivesItsMemoryBack)
{
    auto const cat = startCat();
    std::string bytes(100, 'x');
    auto const *const memory = bytes.data();
    auto const writing = loop.start(cat->write(std::move(bytes)));
    loop.drain();
    EXPECT_EQ(writing.take().data(), memory);
    EXPECT_EQ(read(cat), std::string(100, 'x'));
    endOf(cat);
}

TEST_F(ChildProcessPipeTest, writingNothingIsDoneAtOnce)
{
    auto const cat = startCat();
    EXPECT_EQ(loop.run(cat->write("")), "");
    endOf(cat);
}

TEST_F(ChildProcessPipeTest, anInputThatTheChildHasClosedIsAnErrorAndNotOurEnd)
{
    auto const child = startShell("exec <&-; echo closed; read never");
    EXPECT_EQ(read(child), "closed\n");
    EXPECT_EQ(pipeErrorOf(loop.start(child->write("too late"))), EPIPE);
    child->kill();
    wait(child);
}

TEST_F(ChildProcessPipeTest, aWriterThatWaitsIsToldWhenTheChildGoes)
{
    auto const child = startShell("echo ready; read line; exit 3");
    auto const writing = loop.start(child->write('\n' + someBytes(severalMiB)));

    EXPECT_EQ(pipeErrorOf(writing), EPIPE);
    EXPECT_EQ(wait(child), exited(3));
}

TEST_F(ChildProcessPipeTest, closingTheInputIsItsEndForTheChildBehindWhatWasWritten)
{
    auto const cat = startCat();
    loop.run(cat->write("last words"));
    cat->closeInput();
    cat->closeInput();
    EXPECT_EQ(readAll(cat), "last words");
    EXPECT_EQ(wait(cat), exited(0));
    EXPECT_EQ(pipeErrorOf(loop.start(cat->write("later"))), EBADF);
}

TEST_F(ChildProcessPipeTest, closingTheInputEndsAWriteThatWaits)
{
    auto const sleeper = start({.program = "sleep", .arguments = {"1000"}, .input = PipeEnd{}});
    auto const writing = loop.start(sleeper->write(someBytes(severalMiB)));
    loop.drain();
    EXPECT_FALSE(writing.isDone());
    sleeper->closeInput();

    EXPECT_EQ(pipeErrorOf(writing), EBADF);
    sleeper->kill();
    EXPECT_EQ(wait(sleeper), killed(SIGKILL));
}

TEST_F(ChildProcessPipeTest, theInputOfOneChildIsNotKeptOpenByAnother)
{
    auto const first = startCat();
    auto const second = startCat();
    endOf(first); // would hang if the second had a copy
    endOf(second);
}

TEST_F(ChildProcessPipeTest, anEndThatIsNoPipeCannotBeUsedAsOne)
{
    auto const child = start({.program = "true"});
    EXPECT_EQ(pipeErrorOf(loop.start(child->read(ChildOutput::standard))), EBADF);
    EXPECT_EQ(pipeErrorOf(loop.start(child->read(ChildOutput::error))), EBADF);
    EXPECT_EQ(pipeErrorOf(loop.start(child->write("x"))), EBADF);
    child->closeInput();
    EXPECT_EQ(wait(child), exited(0));
}

TEST_F(ChildProcessPipeTest, aReaderThatIsStoppedWhileItWaitsLosesNothing)
{
    auto const cat = startCat();
    for (int round = 0; round < 3; ++round) {
        auto const reading = loop.start(cat->read(ChildOutput::standard));
        loop.drain();
        EXPECT_FALSE(reading.isDone());
        reading.stop();
        loop.drain();
        EXPECT_THROW(reading.value(), Cancelled);
    }
    loop.run(cat->write("still here"));
    EXPECT_EQ(read(cat), "still here");
    endOf(cat);
}

TEST_F(ChildProcessPipeTest, aReaderThatWasStoppedBeforeItReadsLosesNothing)
{
    auto const child = startShell("echo ready; echo told >&2");
    EXPECT_EQ(loop.run(restOf(child, ChildOutput::error)), "told\n"); // so the output is there
    auto const reading = loop.start(child->read(ChildOutput::standard));
    reading.stop();
    loop.drain();

    EXPECT_THROW(reading.value(), Cancelled);
    EXPECT_EQ(readAll(child), "ready\n");
    EXPECT_EQ(wait(child), exited(0));
}

TEST_F(ChildProcessPipeTest, aWriterThatIsStoppedWhileItWaitsLeavesTheProcessUsable)
{
    auto const cat = startCat(); // waits for a reader of its output, once both pipes are full
    auto const writing = loop.start(cat->write(std::string(severalMiB, 'x')));
    loop.drain();
    EXPECT_FALSE(writing.isDone());
    writing.stop();
    loop.drain();
    EXPECT_THROW(writing.value(), Cancelled);

    auto const again = loop.start(writeAndClose(cat, "y"));
    auto const received = readAll(cat);
    EXPECT_NO_THROW(again.value());
    EXPECT_LT(received.size(), severalMiB) << "only a part was written";
    EXPECT_EQ(received.find('y'), received.size() - 1);
    EXPECT_EQ(wait(cat), exited(0));
}

TEST_F(ChildProcessPipeTest, aStopMayComeAtAnyMomentOfARead)
{
    WorkerPool const pool({.interactive = 2, .background = 1});
    Strand const reader{pool.executor(WorkPriority::interactive)};
    auto const cat = startCat();
    for (int round = 0; round < pipeRaces; ++round) {
        auto const reading = loop.start(onStrand(reader, cat->read(ChildOutput::standard)));
        std::latch ready(2);
        std::jthread const stopper([&] {
            ready.arrive_and_wait();
            reading.stop();
        });
        ready.arrive_and_wait();
        loop.run(cat->write("x"));
        ASSERT_TRUE(loop.runUntil([&] { return reading.isDone(); }));
        if (reading.failed()) {
            EXPECT_THROW(reading.value(), Cancelled);
            EXPECT_EQ(read(cat), "x");
        } else {
            EXPECT_EQ(reading.value(), "x");
        }
    }
    endOf(cat);
}

TEST_F(ChildProcessPipeTest, aCloseMayComeAtAnyMomentOfAWrite)
{
    WorkerPool const pool({.interactive = 2, .background = 1});
    Strand const writer{pool.executor(WorkPriority::interactive)};
    for (int round = 0; round < 50; ++round) {
        auto const child = start({.program = "cat", .input = PipeEnd{}});
        auto const writing = loop.start(onStrand(writer, child->write(std::string(200'000, 'x'))));
        std::jthread const closer([&] { child->closeInput(); });
        loop.runUntil([&] { return writing.isDone(); });
        if (writing.failed())
            EXPECT_EQ(pipeErrorOf(writing), EBADF);
        EXPECT_EQ(wait(child), exited(0));
    }
}

Task<void> moveAll(ChildHandle from, ChildHandle to)
{
    std::size_t moved = 0;
    do {
        moved = co_await from->moveOutput(*to, severalMiB);
    } while (moved > 0);
    to->closeInput();
}

TEST_F(ChildProcessPipeTest, bytesMoveFromOneChildToAnother)
{
    auto const bytes = someBytes(severalMiB);
    auto const first = startCat();
    auto const second = startCat();
    auto const writing = loop.start(writeAndClose(first, bytes));
    auto const moving = loop.start(moveAll(first, second));
    EXPECT_TRUE(readAll(second) == bytes);
    EXPECT_TRUE(loop.runUntil([&] { return writing.isDone() && moving.isDone(); }));
    writing.value();
    moving.value();
    EXPECT_EQ(wait(first), exited(0));
    EXPECT_EQ(wait(second), exited(0));
}

TEST_F(ChildProcessPipeTest, copiedBytesAreStillToBeTakenOrDropped)
{
    auto const first = startCat();
    auto const second = startCat();
    loop.run(first->write("a header and data"));
    EXPECT_EQ(loop.run(first->copyOutput(*second, severalMiB)), 17U);
    EXPECT_EQ(read(second), "a header and data");

    std::string header(8, ' ');
    first->takeOutput(header);
    EXPECT_EQ(header, "a header");
    first->dropOutput(4);
    EXPECT_EQ(read(first), " data");
    EXPECT_THROW(first->takeOutput(header), PipeError) << "there is nothing more";
    endOf(first);
    endOf(second);
}

TEST_F(ChildProcessPipeTest, aMoveStopsWhileItWaitsForEitherChild)
{
    auto const source = startShell("exec cat /dev/zero");
    auto const target = startShell("exec sleep 1000");
    auto const silent = startCat();
    auto const full = loop.start(moveAll(source, target));
    auto const empty = loop.start(moveAll(silent, startCat()));
    full.stop();
    empty.stop();
    EXPECT_TRUE(loop.runUntil([&] { return full.isDone() && empty.isDone(); }));
    EXPECT_THROW(full.value(), Cancelled);
    EXPECT_THROW(empty.value(), Cancelled);
    target->kill();
    wait(target);
    auto const broken = loop.start(source->moveOutput(*target, 1));
    EXPECT_TRUE(loop.runUntil([&] { return broken.isDone(); }));
    try {
        broken.value();
        FAIL() << "nobody reads";
    } catch (PipeError const &failure) {
        EXPECT_EQ(failure.errorNumber(), EPIPE);
    }
    source->kill();
    wait(source);
    endOf(silent);
}

} // namespace
} // namespace tw::test
