#include "Tarnwick/Lifecycle/LifeLog.h"

#include "tests/support/ManualClock.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

constexpr std::size_t longest = 262'144;

TEST(TrimmedLogTest, aLogOfTheLargestSizeIsLeftAlone)
{
    EXPECT_EQ(trimmedLog(std::string(longest - 1, 'x') + '\n'), std::nullopt);
}

TEST(TrimmedLogTest, oneByteMoreAndTheLaterHalfOfTheLinesStays)
{
    // Two lines and the empty piece behind the last line end: of three pieces one stays.
    EXPECT_EQ(trimmedLog(std::string(longest - 2, 'x') + "\ny\n"), "");
    EXPECT_EQ(trimmedLog(std::string(longest - 6, 'x') + "\ny\nz\nw\n"), "w\n");
    EXPECT_EQ(trimmedLog(std::string(longest - 1, 'x') + "\ny"), "y");
    EXPECT_EQ(trimmedLog(std::string(longest + 1, 'x')), "");
}

TEST(TrimmedLogTest, whatIsNoTextIsLeftAlone)
{
    EXPECT_EQ(trimmedLog(std::string(longest + 1, '\xFF')), std::nullopt);
}

class LifeLogTest : public testing::Test {
protected:
    LifeLog log() { return LifeLog({.mainContext = loop.context(), .clock = clock, .file = file}); }

    ~LifeLogTest() override { loop.drain(); } // the heartbeats that were stopped

    std::vector<std::string> lines() const
    {
        std::vector<std::string> all;
        std::ifstream stream(file);
        for (std::string line; std::getline(stream, line);)
            all.push_back(line.substr(line.find("  pid ")));
        return all;
    }

    static std::string line(std::string const &text) { return "  pid " + std::to_string(::getpid()) + "  " + text; }

    TestLoop loop;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    TemporaryFolder folder;
    std::string const file = folder.path("state/Tarnwick/life.log");
};

TEST_F(LifeLogTest, aLineTellsWhenWhoAndWhat)
{
    log().note("alive");
    EXPECT_THAT(contentOf(file), MatchesRegex("[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]  pid [0-9]+  "
                                              "alive\n"));
}

TEST_F(LifeLogTest, itIsForItsUserOnly)
{
    log().note("alive");
    struct stat status;
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(::stat(folder.path("state/Tarnwick").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(LifeLogTest, itBeginsWithTheVersionAndGoesOnBehindWhatIsThere)
{
    {
        auto first = log();
        first.begin("1.2");
        first.note("quit");
    }
    auto second = log();
    second.begin(std::nullopt);
    EXPECT_THAT(lines(), ElementsAre(line("launch 1.2"), line("quit"), line("launch ?")));
}

TEST_F(LifeLogTest, itSaysEveryMinuteThatTheProgramIsAlive)
{
    auto living = log();
    living.begin("1");
    loop.drain();
    for (int minute = 0; minute < 2; ++minute) {
        clock->advance(std::chrono::seconds(59));
        loop.drain();
        EXPECT_EQ(lines().size(), static_cast<std::size_t>(minute + 1));
        clock->advance(std::chrono::seconds(1));
        loop.drain();
    }
    EXPECT_THAT(lines(), ElementsAre(line("launch 1"), line("alive"), line("alive")));
}

TEST_F(LifeLogTest, withTheLogEndsItsHeartbeat)
{
    {
        auto living = log();
        living.begin("1");
        loop.drain();
    }
    loop.drain();
    clock->advance(std::chrono::minutes(2));
    loop.drain();
    EXPECT_THAT(lines(), ElementsAre(line("launch 1")));
}

TEST_F(LifeLogTest, eachEventOfTheSessionHasItsWords)
{
    auto living = log();
    using enum SessionEvent;
    for (auto const event : {sleep, wake, powerOff, handedOver, back})
        living.note(event);
    EXPECT_THAT(lines(), ElementsAre(line("sleep"), line("wake"), line("power off"), line("session handed over"),
                                     line("session back")));
}

TEST_F(LifeLogTest, aLogThatHasGrownTooLongIsCutBeforeTheLaunchIsNoted)
{
    auto living = log();
    std::ofstream(file) << std::string(longest, 'x') << "\n";
    living.begin("1");
    EXPECT_EQ(contentOf(file).find('x'), std::string::npos);
    EXPECT_THAT(contentOf(file), HasSubstr("launch 1"));

    std::ofstream(file, std::ios::trunc) << std::string(longest, 'x');
    auto next = log();
    next.begin("2");
    EXPECT_EQ(contentOf(file).find('x'), 0U);
    EXPECT_THAT(contentOf(file), HasSubstr("launch 2"));
}

TEST_F(LifeLogTest, ofALogOfMonthsTheEndIsKept)
{
    auto living = log();
    std::ofstream(file) << std::string(100 * longest, 'x') << "\nthe end\n";
    living.begin("1");
    EXPECT_TRUE(contentOf(file).starts_with("the end\n"));
    EXPECT_THAT(contentOf(file), HasSubstr("launch 1"));
}

TEST_F(LifeLogTest, aLogThatCannotBeWrittenIsNotMissed)
{
    folder.file("state");
    auto living = log();
    living.begin("1");
    living.note("alive");
    EXPECT_EQ(contentOf(folder.path("state")), "");
}

TEST_F(LifeLogTest, aPipeInItsPlaceHoldsNobodyUp)
{
    folder.folder("state/Tarnwick");
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    auto living = log();
    living.begin("1");
    struct stat status;
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

} // namespace
} // namespace tw::test
