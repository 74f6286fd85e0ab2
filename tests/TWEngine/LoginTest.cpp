#include "TWEngine/Runtime/EngineRuntime.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/PasswordHost.h"
#include "tests/hosts/PrivateKeyring.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/TestHost.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace tw::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr auto right = "correct h\xC3\xB6rse";

/// The whole way of a question: a real ssh, its askpass program, the desk, and a user with prepared answers.
class LoginTest : public testing::Test {
protected:
    /// A host that takes no keys.
    void reachWithPassword(std::string prompt = {}, SSHClient::Knowledge knowledge = SSHClient::Knowledge::right)
    {
        passwordHost = std::make_unique<PasswordHost>(
            engine, PasswordHost::Options{.password = right, .prompt = std::move(prompt)});
        client.add("host", passwordHost->address(), knowledge);
    }

    /// A host that takes a key with a passphrase. There is no agent.
    void reachWithPassphrase()
    {
        keyHost = std::make_unique<TestHost>(engine);
        client.add("host", keyHost->address());
        auto const changed = runCommand(engine.io(), {.program = "ssh-keygen",
                                                      .arguments = {"-q", "-p", "-P", "", "-N", "key phrase", "-f",
                                                                    keyHost->address().identityFile}});
        ASSERT_TRUE(changed.status.isSuccess()) << changed.error;
    }

    Environment environment() const
    {
        auto variables = inheritedEnvironment();
        variables["DBUS_SESSION_BUS_ADDRESS"] = keyring.address();
        variables["XDG_RUNTIME_DIR"] = runtimeFolder;
        return variables;
    }

    CommandOutcome logIn(std::string const &answers, std::string const &sshProgram)
    {
        return runCommand(engine.io(),
                          {.program = passwordProgram(),
                           .arguments = {"--login", sshProgram, "host", "echo hello"},
                           .environment = environment()},
                          answers);
    }

    CommandOutcome logIn(std::string const &answers) { return logIn(answers, client.program()); }

    /// The client of a user who wants to be asked about unknown keys.
    std::string clientThatAsks() const
    {
        auto script =
            folder.file("asking", "#!/bin/sh\nexec " + client.program() + " -o StrictHostKeyChecking=ask \"$@\"\n");
        fs::permissions(script, fs::perms::owner_all);
        return script;
    }

    /// What a session with saved passwords does: nobody can be asked.
    CommandOutcome connectByItself()
    {
        return runCommand(engine.io(), {.program = passwordProgram(),
                                        .arguments = {"sh", "-c",
                                                      "TW_ASKPASS_ACCOUNT=host SSH_ASKPASS=" + passwordProgram() +
                                                          " SSH_ASKPASS_REQUIRE=force " + client.program() +
                                                          " -o NumberOfPasswordPrompts=1 host echo hello; exit $?"},
                                        .environment = environment()});
    }

    TemporaryFolder const folder;
    std::string const runtimeFolder = makeRuntimeFolder();
    EngineRuntime engine;
    PrivateKeyring keyring{engine};
    SSHClient client;
    std::unique_ptr<PasswordHost> passwordHost;
    std::unique_ptr<TestHost> keyHost;

private:
    std::string makeRuntimeFolder() const
    {
        auto path = folder.folder("runtime");
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }
};

TEST_F(LoginTest, aPassphraseIsAskedFor)
{
    reachWithPassphrase();
    auto const outcome = logIn("key phrase\n");
    EXPECT_EQ(outcome.output, "passphrase 1\nhello\n") << outcome.error;
    EXPECT_TRUE(fs::is_empty(runtimeFolder)) << "the socket is gone";
}

TEST_F(LoginTest, aMistypedPassphraseIsAskedForAgain)
{
    reachWithPassphrase();
    auto const outcome = logIn("wrong\nwrong again\nkey phrase\n");
    EXPECT_EQ(outcome.output, "passphrase 1\npassphrase 2\npassphrase 3\nhello\n") << outcome.error;
}

TEST_F(LoginTest, aPasswordIsAskedFor)
{
    reachWithPassword();
    auto const outcome = logIn(std::string("wrong\n") + right + "\n");
    EXPECT_EQ(outcome.output, "password 1\npassword 2\nhello\n") << outcome.error;
    EXPECT_THAT(passwordHost->tries(), ElementsAre("wrong", right));
}

TEST_F(LoginTest, aCodeIsAskedForInTheWordsOfTheHost)
{
    reachWithPassword("Verification code: ");
    auto const outcome = logIn(std::string(right) + "\n");
    EXPECT_EQ(outcome.output, "other 1\nhello\n") << outcome.error;
}

TEST_F(LoginTest, threeWrongPasswordsEndIt)
{
    reachWithPassword();
    auto const outcome = logIn("1\n2\n3\n4\n");
    EXPECT_FALSE(outcome.status.isSuccess());
    EXPECT_EQ(outcome.output, "password 1\npassword 2\npassword 3\n");
    EXPECT_THAT(outcome.error, HasSubstr("Permission denied"));
    EXPECT_THAT(passwordHost->tries(), ElementsAre("1", "2", "3"));
}

TEST_F(LoginTest, aUserWhoRefusesTellsTheHostNothing)
{
    reachWithPassword();
    auto const outcome = logIn("");
    EXPECT_EQ(outcome.output, "password 1\nrefused by user\n");
    EXPECT_THAT(passwordHost->tries(), IsEmpty()) << "ssh is ended before it can take silence for an empty password";
    EXPECT_TRUE(fs::is_empty(runtimeFolder));
}

TEST_F(LoginTest, anUnknownKeyThatIsAcceptedIsKnownFromThenOn)
{
    reachWithPassword({}, SSHClient::Knowledge::none);
    EXPECT_EQ(logIn("yes\n" + std::string(right) + "\n", clientThatAsks()).output, "host key 1\npassword 1\nhello\n");
    EXPECT_EQ(logIn(std::string(right) + "\n", clientThatAsks()).output, "password 1\nhello\n");
}

TEST_F(LoginTest, anUnknownKeyThatIsNotAcceptedIsNotKnown)
{
    reachWithPassword({}, SSHClient::Knowledge::none);
    EXPECT_EQ(logIn("", clientThatAsks()).output, "host key 1\nrefused by user\n");
    EXPECT_THAT(passwordHost->tries(), IsEmpty());
    EXPECT_EQ(logIn("", clientThatAsks()).output, "host key 1\nrefused by user\n");
}

// The key store.

TEST_F(LoginTest, aRememberedPassphraseMakesTheNextConnectionComeUpByItself)
{
    reachWithPassphrase();
    EXPECT_EQ(logIn("+key phrase\n").output, "passphrase 1\nhello\n");
    auto const outcome = connectByItself();
    EXPECT_EQ(outcome.output, "hello\n") << outcome.error;
    EXPECT_EQ(logIn("").output, "hello\n") << "nor does a login ask";
}

TEST_F(LoginTest, aRememberedPasswordMakesTheNextConnectionComeUpByItself)
{
    reachWithPassword();
    EXPECT_EQ(logIn("+" + std::string(right) + "\n").output, "password 1\nhello\n");
    EXPECT_EQ(connectByItself().output, "hello\n");
}

TEST_F(LoginTest, nothingIsKeptUnlessTheUserWantsIt)
{
    reachWithPassphrase();
    EXPECT_EQ(logIn("key phrase\n").output, "passphrase 1\nhello\n");
    EXPECT_EQ(connectByItself().output, "");
}

TEST_F(LoginTest, nothingIsKeptOfALoginThatFails)
{
    reachWithPassword();
    logIn("+1\n+2\n+3\n");
    EXPECT_EQ(logIn("").output, "password 1\nrefused by user\n");
}

TEST_F(LoginTest, aSavedPasswordThatIsWrongIsAskedFor)
{
    reachWithPassword();
    auto const saved = runCommand(
        engine.io(),
        {.program = passwordProgram(), .arguments = {"--store", "60000", "save", "host"}, .environment = environment()},
        "old");
    ASSERT_EQ(saved.output, "yes") << saved.error;
    EXPECT_EQ(logIn(std::string(right) + "\n").output, "password 2\nhello\n");
    EXPECT_THAT(passwordHost->tries(), ElementsAre("old", right));
}

// The askpass program.

TEST_F(LoginTest, startedByAnybodyElseTheAskpassProgramCallsNobody)
{
    auto variables = environment();
    variables["TW_ASKPASS_SOCKET"] = runtimeFolder + "/socket";
    variables["TW_ASKPASS_TOKEN"] = "token";
    auto const outcome = runCommand(
        engine.io(), {.program = passwordProgram(), .arguments = {"ann@host's password: "}, .environment = variables});
    EXPECT_EQ(outcome.status, (ExitStatus{.cause = ExitStatus::Cause::exited, .number = 1}));
    EXPECT_EQ(outcome.output + outcome.error, "");
}

TEST_F(LoginTest, whenTheLoginIsOverTheAskpassProgramFailsAtOnce)
{
    reachWithPassword();
    auto variables = environment();
    variables["SSH_ASKPASS"] = passwordProgram();
    variables["SSH_ASKPASS_REQUIRE"] = "force";
    // Both as in a client that has outlived its login.
    auto const outcome = runCommand(
        engine.io(), {.program = passwordProgram(),
                      .arguments = {"sh", "-c",
                                    "TW_ASKPASS_SOCKET=" + runtimeFolder + "/gone TW_ASKPASS_TOKEN=token " +
                                        client.program() + " -o NumberOfPasswordPrompts=1 host echo hello; exit $?"},
                      .environment = variables});
    EXPECT_THAT(outcome.error, HasSubstr("Permission denied"));
    EXPECT_THAT(outcome.output, Not(HasSubstr("hello")));
}

} // namespace
} // namespace tw::test
