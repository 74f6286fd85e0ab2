#include "TWEngine/Instance/InstanceCall.h"
#include "TWEngine/Instance/InstanceDesk.h"
#include "TWEngine/Instance/InstanceSocket.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tw::test {
namespace {

using namespace std::string_literals;
using Outcome = InstanceCall::Outcome;

TEST(InstanceSocketTest, eachDisplayHasItsOwn)
{
    auto const name = [](std::string const &wayland, std::string const &x11) {
        return InstanceSocket::displayName({{"WAYLAND_DISPLAY", wayland}, {"DISPLAY", x11}});
    };
    EXPECT_EQ(name("wayland-0", ":0"), "wayland-0");
    EXPECT_EQ(name("", ":0"), "_3a0");
    EXPECT_EQ(name("", ":0.1"), "_3a0") << "screens of one display";
    EXPECT_EQ(name("", "far.example:10.0"), "far_2eexample_3a10");
    EXPECT_NE(name("", "a_3a0"), name("", "a:0"));
    EXPECT_EQ(name("/run/../x", ""), "_2frun_2f_2e_2e_2fx");
    EXPECT_EQ(name("", ""), "");
}

TEST(InstanceSocketTest, liesInTheFolderForSocketsOfItsUser)
{
    TemporaryFolder const folder;
    auto const at = folder.folder("run");
    std::filesystem::permissions(at, std::filesystem::perms::owner_all);
    auto const path = [](std::string const &runtime, std::string const &display) {
        return InstanceSocket::pathFor({{"XDG_RUNTIME_DIR", runtime}, {"DISPLAY", display}}, ::getuid());
    };
    EXPECT_EQ(path(at, ":1"), at + "/tarnwick-window-_3a1");
    EXPECT_FALSE(path(at, ""));
    EXPECT_FALSE(path("", ":1"));
    EXPECT_FALSE(path("run", ":1"));
    EXPECT_FALSE(path(at, std::string(100, 'x'))) << "longer than a socket's path";
    std::filesystem::permissions(at, std::filesystem::perms::all);
    EXPECT_FALSE(path(at, ":1")) << "others may write there";
}

/// A desk on a loop of the test, and callers on threads of their own.
class InstanceTest : public ::testing::Test {
protected:
    ~InstanceTest() override
    {
        desk.reset();
        loop.runUntil([this] { return clock.use_count() == 1; }); // nothing of the desk is left
    }

    void openDesk()
    {
        desk = std::make_unique<InstanceDesk>(InstanceDesk::Collaborators{
            .io = runtime.io(),
            .executor = loop.context(),
            .clock = clock,
            .listener = LocalListener::create(runtime.io(), path),
            .understand = [known = understood](std::string_view message) -> std::function<void()> {
                if (message.starts_with("no"))
                    return nullptr;
                return [known, text = std::string(message)] { known->push_back(text); };
            }});
    }

    Outcome call(std::string const &message, std::chrono::milliseconds limit = std::chrono::seconds(30))
    {
        std::atomic<bool> isDone = false;
        Outcome outcome{};
        std::jthread const caller([&] {
            outcome = InstanceCall::make(path, message, limit);
            isDone = true;
            loop.context()->post([] {});
        });
        loop.runUntil([&] { return isDone.load(); });
        return outcome;
    }

    TemporaryFolder folder;
    std::string const path = folder.path("socket");
    std::shared_ptr<std::vector<std::string>> understood = std::make_shared<std::vector<std::string>>();
    EngineRuntime runtime;
    std::shared_ptr<Clock> const clock{runtime.clock().get(), [](Clock *) {}}; ///< one that only the desk shares
    TestLoop loop;
    std::unique_ptr<InstanceDesk> desk;
};

TEST_F(InstanceTest, aCallIsAgreedToAndThenDone)
{
    openDesk();
    auto const message = "open\0/a\0\0"s;
    EXPECT_EQ(call(message), Outcome::agreed);
    loop.runUntil([this] { return !understood->empty(); });
    EXPECT_THAT(*understood, testing::ElementsAre(message));
    EXPECT_EQ(call(message), Outcome::agreed) << "one after the other";
}

TEST_F(InstanceTest, aMessageInPiecesIsOne)
{
    openDesk();
    auto const message = "open\0"s + std::string(40'000, 'x') + "\0\0"s;
    EXPECT_EQ(call(message), Outcome::agreed);
}

TEST_F(InstanceTest, whatIsNotUnderstoodIsNotAgreedTo)
{
    openDesk();
    EXPECT_EQ(call("no\0\0"s), Outcome::silent);
    EXPECT_TRUE(understood->empty());
}

TEST_F(InstanceTest, aMessageThatIsTooLongIsNotAgreedTo)
{
    openDesk();
    EXPECT_EQ(call(std::string(InstanceDesk::longestMessage + 1, 'x') + "\0\0"s), Outcome::silent);
    EXPECT_TRUE(understood->empty());
}

TEST_F(InstanceTest, withoutASocketThereIsNobody)
{
    EXPECT_EQ(InstanceCall::make(path, "open\0\0"s), Outcome::nobody);
}

TEST_F(InstanceTest, aSocketThatWasLeftBehindIsNobody)
{
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.copy(static_cast<char *>(address.sun_path), path.size());
    {
        FileDescriptor const left(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(::bind(left.get(), reinterpret_cast<sockaddr const *>(&address), sizeof address), 0);
    }
    ASSERT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(InstanceCall::make(path, "open\0\0"s), Outcome::nobody);
}

TEST_F(InstanceTest, oneThatDoesNotAnswerIsNotWaitedFor)
{
    auto const listener = LocalListener::create(runtime.io(), path);
    ASSERT_TRUE(listener);
    EXPECT_EQ(InstanceCall::make(path, "open\0\0"s, std::chrono::milliseconds(1)), Outcome::silent);
}

TEST_F(InstanceTest, forACallerThatHasGoneNothingIsDone)
{
    openDesk();
    EXPECT_EQ(InstanceCall::make(path, "open\0\0"s, std::chrono::milliseconds(0)), Outcome::silent);
    EXPECT_EQ(call("open\0second\0\0"s), Outcome::agreed);
    loop.runUntil([this] { return !understood->empty(); });
    EXPECT_THAT(*understood, testing::ElementsAre("open\0second\0\0"s));
}

} // namespace
} // namespace tw::test
