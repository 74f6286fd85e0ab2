#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/e2e/ProgramTest.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/PasswordHost.h"
#include "tests/hosts/PrivateKeyring.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/SSHHome.h"

#include <gmock/gmock.h>

#include <filesystem>

#include <unistd.h>

namespace tw::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// The program with a host that takes no keys, and a key store that may have its password.
class PasswordTest : public ProgramTest {
protected:
    PasswordTest() { client.add(alias, host.address()); }

    Child::Environment environment() const override
    {
        auto changes = ProgramTest::environment();
        changes.merge(sshHome(folder, client.home()));
        changes["DBUS_SESSION_BUS_ADDRESS"] = keyring.address();
        return changes;
    }

    void save(std::string const &password)
    {
        auto variables = inheritedEnvironment();
        variables["DBUS_SESSION_BUS_ADDRESS"] = keyring.address();
        auto const saved = runCommand(engine.io(),
                                      {.program = passwordProgram(),
                                       .arguments = {"--store", "60000", "save", alias},
                                       .environment = std::move(variables)},
                                      password);
        ASSERT_EQ(saved.output, "yes") << saved.error;
    }

    Child startOnHost() const { return start({"--left", at("left"), "--right", alias + ":" + at("right")}); }

    // No other test, and no user, has a shared connection under this name.
    std::string const alias = "tarnwick-password-" + std::to_string(::getpid());
    EngineRuntime engine;
    PrivateKeyring keyring{engine};
    PasswordHost host{engine, {.password = "correct horse"}};
    SSHClient client;
};

TEST_F(PasswordTest, aHostIsLoggedInToWithItsSavedPassword)
{
    save("correct horse");
    auto program = startOnHost();
    expectBothFoldersPainted(program);
    EXPECT_THAT(host.tries(), Each("correct horse"));
    expectQuits(program);
}

TEST_F(PasswordTest, thePasswordIsInNoFileAndNoProcessThatOthersCanSee)
{
    save("correct horse");
    auto program = startOnHost();
    expectBothFoldersPainted(program);
    auto processes = 0;
    for (auto const &process : descendantsOf(::getpid())) {
        if (process.hasEnded() || (process.name != "tarnwick" && process.name != "ssh"))
            continue;
        ++processes;
        for (auto const *what : {"cmdline", "environ"})
            EXPECT_THAT(contentOf("/proc/" + std::to_string(process.id) + "/" + what), Not(HasSubstr("correct horse")))
                << process.name;
    }
    EXPECT_GE(processes, 2) << "the program and its ssh";
    expectQuits(program);
    auto files = 0;
    for (auto const &entry : std::filesystem::recursive_directory_iterator(at("home"))) {
        if (!entry.is_regular_file())
            continue;
        ++files;
        EXPECT_THAT(contentOf(entry.path()), Not(HasSubstr("correct horse"))) << entry.path();
    }
    EXPECT_GE(files, 3) << "the settings, the listings and the log";
    EXPECT_THAT(program.output(), Not(HasSubstr("correct horse")));
}

TEST_F(PasswordTest, aWrongPasswordIsTriedOnceAndThePaneStaysAtHome)
{
    save("wrong");
    auto program = startOnHost();
    expectPainted(program, at("left"));
    expectPainted(program, at("home"));
    EXPECT_THAT(host.tries(), ElementsAre("wrong"));
    expectQuits(program);
}

} // namespace
} // namespace tw::test
