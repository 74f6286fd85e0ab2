#include "TWEngine/Platform/HomeFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>

#include <pwd.h>
#include <unistd.h>

namespace tw::test {
namespace {

class HomeFolderTest : public testing::Test {
protected:
    HomeFolderTest()
    {
        if (auto const *const set = std::getenv("HOME"))
            before = set;
    }

    ~HomeFolderTest() override { before ? ::setenv("HOME", before->c_str(), 1) : ::unsetenv("HOME"); }

    static void ensure() { HomeFolder::ensureInEnvironment(workers(), std::chrono::minutes(1)); }

    static WorkerPool &workers()
    {
        static WorkerPool pool({.interactive = 1, .background = 0});
        return pool;
    }

    std::optional<std::string> before;
};

TEST_F(HomeFolderTest, itIsWhatTheEnvironmentSays)
{
    ::setenv("HOME", "/home/someone", 1);
    ensure();
    EXPECT_EQ(HomeFolder::path(), "/home/someone");
}

TEST_F(HomeFolderTest, withoutOneInTheEnvironmentItIsThatOfTheAccount)
{
    auto const *const record = ::getpwuid(::getuid());
    auto const expected = record && record->pw_dir[0] == '/' ? std::string(record->pw_dir) : "/";
    for (auto const *const unusable : {"", "relative"}) {
        ::setenv("HOME", unusable, 1);
        ensure();
        EXPECT_EQ(HomeFolder::path(), expected);
    }
    ::unsetenv("HOME");
    ensure();
    EXPECT_EQ(HomeFolder::path(), expected);
}

TEST_F(HomeFolderTest, anAccountThatIsNotKnownInTimeIsNotWaitedFor)
{
    ::unsetenv("HOME");
    std::promise<void> gate;
    workers().executor(WorkPriority::interactive)->post([opened = gate.get_future().share()] { opened.wait(); });
    HomeFolder::ensureInEnvironment(workers(), std::chrono::milliseconds(1));
    EXPECT_EQ(HomeFolder::path(), "/");
    gate.set_value();
    workers().waitUntilIdle();
    EXPECT_EQ(HomeFolder::path(), "/") << "an answer that is late is not used";
}

} // namespace
} // namespace tw::test
