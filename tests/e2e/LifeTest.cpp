#include "tests/e2e/ProgramTest.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <fstream>

namespace tw::test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

/// How the program begins and ends.
class LifeTest : public ProgramTest {
protected:
    /// What its log says, without the time and the process.
    std::vector<std::string> life() const
    {
        std::vector<std::string> texts;
        std::ifstream stream(at("home/.local/state/Tarnwick/life.log"));
        for (std::string line; std::getline(stream, line);) {
            EXPECT_THAT(line, MatchesRegex("[-0-9]+ [:0-9]+  pid [0-9]+  .+"));
            texts.push_back(line.substr(line.find("  ", line.find("pid ")) + 2));
        }
        return texts;
    }
};

class TerminatedTest : public LifeTest, public testing::WithParamInterface<int> {};

TEST_P(TerminatedTest, itQuitsAsTheUserWould)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    auto const begin = std::chrono::steady_clock::now();
    program.signal(GetParam());
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2)) << "the engine had no time to finish";
    EXPECT_THAT(life(), ElementsAre("launch " TARNWICK_VERSION, "quit")) << "it was not the user who closed a window";
}

INSTANTIATE_TEST_SUITE_P(Signals, TerminatedTest, testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](auto const &signal) { return "SIG" + std::string(sigabbrev_np(signal.param)); });

TEST_F(LifeTest, itsLogTellsHowItBeganAndEnded)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"ctrl+w"});
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
    EXPECT_THAT(life(), ElementsAre("launch " TARNWICK_VERSION,
                                    MatchesRegex("last window closed — quitting "
                                                 "\\(windows: [0-9]+\\)"),
                                    "quit"));
}

TEST_F(LifeTest, whoQuitsHasNotClosedAWindow)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    expectQuits(program);
    EXPECT_THAT(life(), ElementsAre("launch " TARNWICK_VERSION, "quit"));
}

TEST_F(LifeTest, whatItKilledCannotSayIsMissingInTheLog)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    program.signal(SIGKILL);
    EXPECT_EQ(program.waitForEnd(), -SIGKILL);
    EXPECT_THAT(life(), ElementsAre("launch " TARNWICK_VERSION));
}

TEST_F(LifeTest, aNewUserIsWelcomedOnce)
{
    folder.file("home/.config/Tarnwick/Tarnwick.ini", "");
    {
        auto program = startOnBothFolders();
        expectBothFoldersPainted(program);
        EXPECT_TRUE(screen.waitForPicture(
            [&](Picture const &) { return screen.titles().find("Welcome to Tarnwick") != std::string::npos; }));
        EXPECT_THAT(contentOf(at("home/.config/Tarnwick/Tarnwick.ini")), HasSubstr("tw.welcomeShown=true"))
            << "before it can be seen, so that a crash does not bring it back";
        program.signal(SIGKILL);
        program.waitForEnd();
    }
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    EXPECT_THAT(screen.titles(), testing::Not(HasSubstr("Welcome to Tarnwick")));
    expectQuits(program);
}

TEST_F(LifeTest, theAboutBoxHoldsNothingUp)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    press({"F1"});
    EXPECT_TRUE(screen.waitForPicture(
        [&](Picture const &) { return screen.titles().find("About Tarnwick") != std::string::npos; }));
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
    EXPECT_THAT(life(), ElementsAre("launch " TARNWICK_VERSION, "quit"));
}

TEST_F(LifeTest, aHomeThatCannotBeWrittenIsNoObstacle)
{
    auto changes = environment();
    changes["HOME"] = "/proc/self";
    Child program({TARNWICK_PROGRAM, "--left", at("left"), "--right", at("right")}, changes);
    expectBothFoldersPainted(program);
    program.signal(SIGTERM);
    EXPECT_EQ(program.waitForEnd(), 0) << program.output();
}

} // namespace

} // namespace tw::test
