#include "TWEngine/Runtime/ChildPipe.h"

#include "TWCore/Async/Cancelled.h"
#include "TWEngine/Runtime/IoThread.h"
#include "TWEngine/Runtime/PipeError.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <cerrno>

#include <fcntl.h>

namespace tw::test {
namespace {

/// Devices stand in for a child that is always faster: they never make a task wait.
class ChildPipeTest : public ::testing::Test {
protected:
    std::shared_ptr<ChildPipe> openDevice(char const *path, int mode)
    {
        return std::make_shared<ChildPipe>(io, FileDescriptor(open(path, mode | O_CLOEXEC)));
    }

    /// One turn of the loop. It would not come back from a task that never gives way.
    void turn()
    {
        EXPECT_TRUE(loop.runUntil([] { return true; }));
    }

    IoThread io;
    TestLoop loop;
};

Task<void> readForEver(std::shared_ptr<ChildPipe> pipe)
{
    std::string buffer;
    for (;;)
        buffer = co_await pipe->read(std::move(buffer));
}

Task<void> writeForEver(std::shared_ptr<ChildPipe> pipe)
{
    std::string buffer(65'536, 'x');
    for (;;)
        buffer = co_await pipe->write(std::move(buffer));
}

TEST_F(ChildPipeTest, aPipeThatIsNeverEmptyDoesNotKeepItsExecutorFromOthers)
{
    auto const reading = loop.start(readForEver(openDevice("/dev/zero", O_RDONLY)));
    turn();
    turn();
    EXPECT_FALSE(reading.isDone());

    reading.stop();
    turn();
    EXPECT_THROW(reading.value(), Cancelled);
}

TEST_F(ChildPipeTest, aPipeThatIsNeverFullDoesNotKeepItsExecutorFromOthers)
{
    auto const writing = loop.start(writeForEver(openDevice("/dev/null", O_WRONLY)));
    turn();
    turn();
    EXPECT_FALSE(writing.isDone());

    writing.stop();
    turn();
    EXPECT_THROW(writing.value(), Cancelled);
}

TEST_F(ChildPipeTest, whatTheSystemSaysIsThrown)
{
    auto const full = openDevice("/dev/full", O_WRONLY);
    auto const writing = loop.start(full->write("x"));
    turn();
    try {
        writing.value();
        FAIL() << "it was written";
    } catch (PipeError const &error) {
        EXPECT_EQ(error.errorNumber(), ENOSPC);
        EXPECT_STREQ(error.what(), "No space left on device");
    }
}

} // namespace
} // namespace tw::test
