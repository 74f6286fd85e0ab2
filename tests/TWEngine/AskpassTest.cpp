#include "TWEngine/Passwords/Askpass.h"

#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "tests/hosts/CommandOutcome.h"
#include "tests/hosts/PasswordHost.h"
#include "tests/hosts/PrivateKeyring.h"
#include "tests/hosts/ProcessTree.h"
#include "tests/hosts/SSHClient.h"
#include "tests/hosts/WaitFor.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace tw::test {
namespace {

namespace fs = std::filesystem;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto right = "correct h\xC3\xB6rse";

/// A real ssh, a host that takes no keys, a key store, and a program that stands for ours.
class AskpassTest : public testing::Test {
protected:
    void reach(std::string prompt = {}, SSHClient::Knowledge knowledge = SSHClient::Knowledge::right)
    {
        host = std::make_unique<PasswordHost>(engine,
                                              PasswordHost::Options{.password = right, .prompt = std::move(prompt)});
        client.add("host", host->address(), knowledge);
    }

    void savePassword(std::string_view password = right, std::string const &account = "host")
    {
        auto const saved = runCommand(engine.io(),
                                      {.program = passwordProgram(),
                                       .arguments = {"--store", "60000", "save", account},
                                       .environment = environment("none", "")},
                                      std::string(password));
        ASSERT_EQ(saved.output, "yes") << saved.error;
    }

    /// With what ssh is told to ask `helper`, and where the key store is.
    Environment environment(std::string const &helper, std::string const &account = "host") const
    {
        auto variables = inheritedEnvironment();
        variables["DBUS_SESSION_BUS_ADDRESS"] = keyring.address();
        variables["SSH_ASKPASS"] = helper;
        variables["SSH_ASKPASS_REQUIRE"] = "force";
        variables["TW_ASKPASS_ACCOUNT"] = account;
        return variables;
    }

    /// ssh to the host, which says hello; as a shell has it.
    std::string ssh(std::string const &options = {}) const
    {
        return client.program() + " -o NumberOfPasswordPrompts=1 " + options + " host echo hello";
    }

    /// Runs a line of shell below `program`, which also answers ssh.
    CommandOutcome below(std::string const &program, std::string const &line,
                         std::string const &helper = passwordProgram())
    {
        // The program itself is started as usual: the account is for those that ssh starts.
        auto variables = environment(helper);
        variables.erase("TW_ASKPASS_ACCOUNT");
        return runCommand(engine.io(), {.program = program,
                                        .arguments = {"sh", "-c", "TW_ASKPASS_ACCOUNT=host " + line},
                                        .environment = variables});
    }

    CommandOutcome belowOurs(std::string const &line) { return below(passwordProgram(), line); }

    /// The password program as ssh would start it.
    CommandOutcome ask(Environment variables, std::vector<std::string> arguments = {"ann@host's password: "})
    {
        return runCommand(
            engine.io(),
            {.program = passwordProgram(), .arguments = std::move(arguments), .environment = std::move(variables)});
    }

    /// ssh got no password from the helper, and told the host none that was saved.
    void expectRefused(CommandOutcome const &outcome) const
    {
        EXPECT_EQ(outcome.output, "");
        EXPECT_FALSE(outcome.status.isSuccess());
        EXPECT_THAT(host->tries(), Each("")) << outcome.error;
    }

    static void expectSilentFailure(CommandOutcome const &outcome)
    {
        EXPECT_EQ(outcome.status, (ExitStatus{.cause = ExitStatus::Cause::exited, .number = 1}));
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.error, "");
    }

    EngineRuntime engine;
    PrivateKeyring keyring{engine};
    SSHClient client;
    TemporaryFolder folder;
    std::unique_ptr<PasswordHost> host;
};

TEST_F(AskpassTest, theSavedPasswordLogsIn)
{
    reach();
    savePassword();
    auto const outcome = belowOurs(ssh());
    EXPECT_EQ(outcome.output, "hello\n") << outcome.error;
    EXPECT_EQ(outcome.error, "");
    EXPECT_THAT(host->tries(), ElementsAre(right));
}

TEST_F(AskpassTest, aWrongPasswordIsTriedOnce)
{
    reach();
    savePassword("wrong");
    auto const outcome = belowOurs(ssh());
    EXPECT_FALSE(outcome.status.isSuccess());
    EXPECT_THAT(outcome.error, HasSubstr("Permission denied"));
    EXPECT_THAT(host->tries(), ElementsAre("wrong"));
}

TEST_F(AskpassTest, withoutASavedPasswordTheLoginFails)
{
    reach();
    savePassword(right, "another host");
    auto const outcome = belowOurs(ssh());
    expectRefused(outcome);
    EXPECT_THAT(outcome.error, HasSubstr("Permission denied"));
}

TEST_F(AskpassTest, aHostMayAskInItsOwnWords)
{
    reach("Password: ");
    savePassword();
    EXPECT_EQ(belowOurs(ssh()).output, "hello\n");
    EXPECT_THAT(host->tries(), ElementsAre(right));
}

TEST_F(AskpassTest, aHostThatAsksForACodeIsNotToldThePassword)
{
    reach("Verification code: ");
    savePassword();
    expectRefused(belowOurs(ssh()));
}

TEST_F(AskpassTest, theQuestionWhetherAHostIsTheRightOneIsNotAnswered)
{
    reach({}, SSHClient::Knowledge::none);
    savePassword();
    auto const outcome = belowOurs(ssh("-o StrictHostKeyChecking=ask"));
    expectRefused(outcome);
    EXPECT_THAT(outcome.error, HasSubstr("Host key verification failed"));
    EXPECT_THAT(host->tries(), IsEmpty());
}

TEST_F(AskpassTest, theHostInBetweenIsNotToldThePassword)
{
    reach();
    savePassword();
    // The same host is in between and behind; the one in between comes first and goes no further.
    auto const outcome = belowOurs(client.program() + " -o NumberOfPasswordPrompts=1 -o ProxyCommand='" +
                                   client.program() + " -o NumberOfPasswordPrompts=1 -W %h:%p host' host echo hello");
    expectRefused(outcome);
    EXPECT_THAT(host->tries(), ElementsAre("")) << outcome.error;
}

// The refusals of the guard.

TEST_F(AskpassTest, startedFromAShellItIsSilent)
{
    savePassword();
    expectSilentFailure(ask(environment(passwordProgram())));
    expectSilentFailure(
        runCommand(engine.io(), {.program = "sh",
                                 .arguments = {"-c", passwordProgram() + " \"x's password: \"; exit $?"},
                                 .environment = environment(passwordProgram())}));
    expectSilentFailure(ask(environment(passwordProgram()), {}));
}

TEST_F(AskpassTest, startedByItselfItIsSilent)
{
    savePassword();
    expectSilentFailure(belowOurs("exec " + passwordProgram() + " \"x's password: \""));
}

TEST_F(AskpassTest, startedByAnSSHOfSomebodyElseItIsSilent)
{
    reach();
    savePassword();
    auto const outcome = runCommand(
        engine.io(),
        {.program = "sh", .arguments = {"-c", ssh() + "; exit $?"}, .environment = environment(passwordProgram())});
    expectRefused(outcome);
}

TEST_F(AskpassTest, withAnEmptyVariableItStartsAsUsual)
{
    savePassword();
    auto const outcome = ask(environment(passwordProgram(), ""), {"echo", "as usual"});
    EXPECT_EQ(outcome.output, "as usual\n");
    EXPECT_TRUE(outcome.status.isSuccess());
}

TEST_F(AskpassTest, belowARenamedCopyOfTheProgramItIsSilent)
{
    reach();
    savePassword();
    auto const copy = folder.path("copy");
    fs::copy_file(passwordProgram(), copy);
    expectRefused(below(copy, ssh()));
    EXPECT_EQ(below(copy, ssh(), copy).output, "hello\n") << "the copy is a program of its own";
}

TEST_F(AskpassTest, throughALinkTheProgramIsItself)
{
    reach();
    savePassword();
    auto const link = folder.link("link", passwordProgram());
    EXPECT_EQ(below(link, ssh()).output, "hello\n");
    EXPECT_EQ(below(passwordProgram(), ssh(), link).output, "hello\n");
}

TEST_F(AskpassTest, belowAProgramThatWasReplacedItIsSilent)
{
    reach();
    savePassword();
    auto const copy = folder.path("copy");
    fs::copy_file(passwordProgram(), copy);
    // As an update does it while the program runs.
    expectRefused(
        below(copy, "sh -c \"rm " + copy + "; cp " + passwordProgram() + " " + copy + "; " + ssh() + "\"", copy));
}

TEST_F(AskpassTest, aProgramThatWasDeletedAnswersNobody)
{
    reach();
    savePassword();
    auto const copy = folder.path("copy");
    fs::copy_file(passwordProgram(), copy);
    // The helper is the running program itself, although it has no name any more.
    expectRefused(below(copy, "sh -c \"rm " + copy + "; " + ssh() + "\"", "/proc/self/exe"));
}

// Where it cannot be told.

TEST_F(AskpassTest, withoutAnOutputNothingIsRead)
{
    savePassword();
    auto const script = folder.file("ask", "#!/bin/sh\nexec " + passwordProgram() + " \"$@\" >&-\n");
    fs::permissions(script, fs::perms::owner_all);
    reach();
    auto const outcome = below(passwordProgram(), ssh(), script);
    expectRefused(outcome);
}

TEST_F(AskpassTest, aQuestionThatIsNoneIsNotAnswered)
{
    reach();
    savePassword();
    auto const outcome = belowOurs("SSH_ASKPASS_PROMPT=confirm " + ssh());
    expectRefused(outcome);
}

/// The helper below a process, as soon as it has shut itself off.
ProcessRecord waitForPrivateHelperBelow(pid_t program)
{
    for (;;) {
        for (auto const &process : descendantsOf(program)) {
            auto const limits = contentOf("/proc/" + std::to_string(process.id) + "/limits");
            auto const asker = recordOf(process.parent);
            if (asker && asker->name == "ssh" && process.name.starts_with("password_pro") &&
                limits.contains("Max core file size        0                    0 "))
                return process;
        }
        std::this_thread::yield();
    }
}

TEST_F(AskpassTest, whileItReadsAPasswordItsMemoryIsItsOwn)
{
    reach();
    // A bus that takes nobody in: the helper waits.
    FileDescriptor const mute(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    folder.path("bus").copy(static_cast<char *>(address.sun_path), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(mute.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(mute.get(), 1), 0);

    auto variables = environment(passwordProgram(), "");
    variables["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + folder.path("bus");
    auto const program =
        ChildProcess::start(engine.io(), {.program = passwordProgram(),
                                          .arguments = {"sh", "-c", "TW_ASKPASS_ACCOUNT=host " + ssh() + "; exit $?"},
                                          .environment = std::move(variables)})
            .value();
    auto const helper = waitForPrivateHelperBelow(program->processId());
    struct stat status{};
    ASSERT_EQ(::stat(("/proc/" + std::to_string(helper.id) + "/mem").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U) << "others of this user may look into it";

    std::ranges::for_each(descendantsOf(program->processId()), killAndWait);
    waitFor(program->wait());
}

// The whole way.

TEST_F(AskpassTest, aProviderGivesSSHTheSavedPassword)
{
    reach();
    savePassword();
    auto variables = environment("none", "");
    auto const outcome = runCommand(engine.io(), {.program = passwordProgram(),
                                                  .arguments = {"--provider", client.program(), "host", "echo hello"},
                                                  .environment = variables});
    EXPECT_EQ(outcome.output, "hello\n") << outcome.error;
    EXPECT_THAT(host->tries(), Each(right));
    EXPECT_THAT(host->tries(), testing::Not(IsEmpty()));
}

TEST_F(AskpassTest, aProviderWithoutASavedPasswordAsksNobody)
{
    reach();
    auto const outcome = runCommand(engine.io(), {.program = passwordProgram(),
                                                  .arguments = {"--provider", client.program(), "host", "echo hello"},
                                                  .environment = environment("none", "")});
    EXPECT_FALSE(outcome.status.isSuccess());
    EXPECT_THAT(outcome.error, HasSubstr("cannot reach host: "));
    EXPECT_THAT(host->tries(), IsEmpty());
}

} // namespace
} // namespace tw::test
