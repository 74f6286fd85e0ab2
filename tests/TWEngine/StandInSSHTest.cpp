#include "tests/hosts/StandInSSH.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {

namespace {

using Fault = StandInSSH::Fault;
using testing::ElementsAre;

/// What tests of faults take for granted.
class StandInSSHTest : public testing::Test {
protected:
    EngineRuntime engine;
    StandInSSH standIn;

    CommandOutcome run(std::vector<std::string> arguments)
    {
        return runCommand(engine.io(), {.program = standIn.program(), .arguments = std::move(arguments)});
    }
};

TEST_F(StandInSSHTest, everyStartIsRecorded)
{
    run({"host", "true"});
    run({"-o", "A B", "", "host", "echo"});

    EXPECT_THAT(standIn.starts(),
                ElementsAre(ElementsAre("host", "true"), ElementsAre("-o", "A B", "", "host", "echo")));
}

TEST_F(StandInSSHTest, bytesAreCorruptedAcrossPieces)
{
    standIn.behave({.fault = Fault::corrupt, .afterBytes = 2, .faultBytes = 3});

    EXPECT_EQ(run({"host", "printf ab; printf c; printf de; printf f"}).output, "ab\x9c\x9b\x9a"
                                                                                "f");
}

} // namespace

} // namespace tw::test
