#include "tests/hosts/LoginScripts.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"

#include <gtest/gtest.h>

namespace tw::test {

namespace {

class LoginScriptsTest : public testing::Test {
protected:
    LoginScriptsTest() { client.add("host", host.address()); }

    EngineRuntime engine;
    SSHClient client;
    TestHost const host{engine, {.loginScript = loginWithAnotherShell()}};

    CommandOutcome ssh(std::string command, std::string input = {})
    {
        return runCommand(engine.io(), {.program = client.program(), .arguments = {"host", std::move(command)}},
                          std::move(input));
    }
};

TEST_F(LoginScriptsTest, anotherShellKnowsQuotesAndWordsOnly)
{
    EXPECT_EQ(ssh("sh -c 'x=$(echo quoted) && echo $x 2>&1'").output, "quoted\n");
    EXPECT_EQ(ssh("exec bash -s", "echo $((6 * 7))\n").output, "42\n");
    for (auto const *const command : {"x=1; echo $x", "echo $(echo no)", "echo no 2>&1", "if true; then echo no; fi",
                                      "{ echo no; }", "export X", "sh -c 'echo\nno'"}) {
        auto const outcome = ssh(command);
        EXPECT_EQ(outcome.output, "") << command;
        EXPECT_NE(outcome.error, "") << command;
        EXPECT_FALSE(outcome.status.isSuccess()) << command;
    }
}

} // namespace

} // namespace tw::test
