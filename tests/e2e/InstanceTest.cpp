#include "tests/e2e/ProgramTest.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>

namespace tw::test {

namespace {

/// The program, started twice on one display.
using InstanceProgramTest = ProgramTest;

TEST_F(InstanceProgramTest, aSecondStartOpensItsPlacesInTheWindowThatIsThere)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    auto second = start({at("left/alpha")});
    EXPECT_EQ(second.waitForEnd(), 0) << second.output();
    expectPainted(program, at("left/alpha"));
    auto third = start({"--right", at("left/beta")});
    EXPECT_EQ(third.waitForEnd(), 0) << third.output();
    expectPainted(program, at("left/beta"));
    // Beside the tabs that there are.
    pressUntilPainted(program, {"ctrl+1"}, at("right"));
    expectQuits(program);
}

TEST_F(InstanceProgramTest, aStartThatIsToHaveAWindowOfItsOwnHasOne)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    auto second = start({"--new-instance", "--left", at("left/alpha"), "--right", at("left/beta")});
    expectPainted(second, at("left/alpha"));
    expectPainted(second, at("left/beta"));
}

TEST_F(InstanceProgramTest, aProgramThatDoesNotAnswerHoldsUpNobody)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    ASSERT_EQ(::kill(program.id(), SIGSTOP), 0);
    auto second = start({"--left", at("left/alpha")});
    expectPainted(second, at("left/alpha"));
    ASSERT_EQ(::kill(program.id(), SIGCONT), 0);
}

TEST_F(InstanceProgramTest, aProgramThatWasKilledLeavesNothingInTheWay)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    ::kill(program.id(), SIGKILL);
    program.waitForEnd();
    auto second = startOnBothFolders();
    expectBothFoldersPainted(second);
    auto third = start({at("left/alpha")});
    EXPECT_EQ(third.waitForEnd(), 0) << third.output();
    expectPainted(second, at("left/alpha"));
    expectQuits(second);
}

TEST_F(InstanceProgramTest, whatWasOpenIsOpenTheNextTime)
{
    auto program = startOnBothFolders();
    expectBothFoldersPainted(program);
    auto second = start({at("left/alpha")});
    EXPECT_EQ(second.waitForEnd(), 0) << second.output();
    expectPainted(program, at("left/alpha"));
    expectQuits(program);

    auto next = start({});
    expectPainted(next, at("left/alpha"));
    expectPainted(next, at("right"));
    pressUntilPainted(next, {"ctrl+1"}, at("left"));
    expectQuits(next);
}

} // namespace

} // namespace tw::test
