#include "TWEngine/Runtime/LocalListener.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/PipeError.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace tw::test {
namespace {

namespace fs = std::filesystem;

class LocalListenerTest : public testing::Test {
protected:
    FileDescriptor call() const
    {
        FileDescriptor caller(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        path.copy(static_cast<char *>(address.sun_path), sizeof address.sun_path - 1);
        if (::connect(caller.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
            return FileDescriptor();
        return caller;
    }

    TemporaryFolder const folder;
    std::string const path = folder.path("socket");
    EngineRuntime engine;
    TestLoop loop;
    std::unique_ptr<LocalListener> listener = LocalListener::create(engine.io(), path);
};

TEST_F(LocalListenerTest, aCallerIsKnown)
{
    auto const caller = call();
    auto const accepted = loop.run(listener->accept());
    EXPECT_EQ(accepted.process, ::getpid());
    EXPECT_EQ(accepted.user, ::getuid());
    EXPECT_NE(::fcntl(accepted.connection.get(), F_GETFD) & FD_CLOEXEC, 0) << "no child inherits it";
}

TEST_F(LocalListenerTest, acceptingWaitsForACaller)
{
    auto const accepting = loop.start(listener->accept());
    loop.drain();
    EXPECT_FALSE(accepting.isDone());
    auto const caller = call();
    loop.runUntil([&] { return accepting.isDone(); });
    EXPECT_FALSE(accepting.failed());
}

TEST_F(LocalListenerTest, aStoppedTaskEndsAndTheNextAccepts)
{
    auto const stopped = loop.start(listener->accept());
    loop.drain();
    stopped.stop();
    loop.runUntil([&] { return stopped.isDone(); });
    EXPECT_THROW(stopped.take(), Cancelled);
    auto const caller = call();
    EXPECT_EQ(loop.run(listener->accept()).process, ::getpid());
}

TEST_F(LocalListenerTest, closingRemovesTheFileAndEndsTheWait)
{
    auto const accepting = loop.start(listener->accept());
    loop.drain();
    listener->close();
    EXPECT_FALSE(fs::exists(path));
    loop.runUntil([&] { return accepting.isDone(); });
    EXPECT_THROW(accepting.take(), PipeError);
    EXPECT_THROW(loop.run(listener->accept()), PipeError);
    EXPECT_FALSE(call());
}

TEST_F(LocalListenerTest, aFileThatExistsStaysAsItIs)
{
    EXPECT_EQ(LocalListener::create(engine.io(), path), nullptr);
    EXPECT_TRUE(call());
    EXPECT_EQ(LocalListener::create(engine.io(), folder.path("no/folder")), nullptr);
    EXPECT_EQ(LocalListener::create(engine.io(), "/" + std::string(107, 'x')), nullptr);
    EXPECT_EQ(LocalListener::create(engine.io(), ""), nullptr);
}

} // namespace
} // namespace tw::test
