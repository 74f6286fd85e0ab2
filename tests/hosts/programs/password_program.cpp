// A program that has saved passwords, as the real one has: ssh asks it for them when it has started that ssh.
//
// password_program COMMAND ARGUMENT...          runs COMMAND and ends as it does
// password_program --provider SSH HOST COMMAND  reaches HOST through an SSHProvider with SSH as the client, and prints
//                                               what COMMAND says there
// password_program --login SSH HOST COMMAND     logs in to HOST with SSH as the client, runs COMMAND there, and prints
// each
//                                               question and what COMMAND says. Each line of standard input is an
//                                               answer; one with a "+" before it is to be remembered. Where there is
//                                               none, the user refuses
// password_program --store LIMIT OPERATION HOST save, read, exists, presence, unlock or remove, within LIMIT
//                                               milliseconds; prints the result. A password to be saved is on standard
//                                               input; "unlock-while-input" gives up when standard input ends

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Passwords/Askpass.h"
#include "TWEngine/Passwords/AskpassDesk.h"
#include "TWEngine/Passwords/SSHPassword.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "tests/hosts/WaitFor.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <limits>
#include <span>
#include <stop_token>
#include <thread>
#include <utility>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tw::test {
namespace {

int runCommand(char **command)
{
    pid_t child = -1;
    if (::posix_spawnp(&child, command[0], nullptr, nullptr, command, environ) != 0)
        return EXIT_FAILURE;
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}

int askHost(std::string program, std::string host, std::string command)
{
    auto const sockets = std::filesystem::temp_directory_path().string() + "/none"; // nothing is shared
    EngineRuntime engine;
    auto const provider = std::make_shared<SSHProvider>(
        SSHProvider::Collaborators{.engine = engine,
                                   .sshProgram = std::move(program),
                                   .sockets = {.base = sockets, .user = ::getuid()},
                                   .savedPasswords = SavedPasswords::ofThisSession(engine)},
        std::move(host));
    int status = EXIT_SUCCESS;
    try {
        waitFor(provider->connect());
        auto const result = waitFor(provider->runCommand({.text = std::move(command)}));
        std::fputs(result.output.c_str(), stdout);
    } catch (std::exception const &failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        status = EXIT_FAILURE;
    }
    waitFor(provider->disconnect());
    return status;
}

std::string_view nameOf(LoginQuestion::Kind kind)
{
    switch (kind) {
    case LoginQuestion::Kind::password:
        return "password";
    case LoginQuestion::Kind::passphrase:
        return "passphrase";
    case LoginQuestion::Kind::hostKey:
        return "host key";
    case LoginQuestion::Kind::confirm:
        return "confirm";
    case LoginQuestion::Kind::archive:
        return "archive";
    case LoginQuestion::Kind::notice:
        return "notice";
    case LoginQuestion::Kind::other:
        return "other";
    }
    std::unreachable();
}

/// A user whose answers stand on standard input.
class ScriptedPrompter final : public LoginPrompter {
public:
    Task<std::optional<LoginAnswer>> ask(LoginQuestion question) override
    {
        std::cout << nameOf(question.kind) << ' ' << question.attempt << '\n';
        std::string line;
        std::optional<LoginAnswer> answer;
        if (std::getline(std::cin, line)) {
            auto const isKept = line.starts_with('+');
            answer.emplace(LoginAnswer{.text = SecretText(line.substr(isKept ? 1 : 0)), .remember = isKept});
        }
        return answered(std::move(answer));
    }

private:
    static Task<std::optional<LoginAnswer>> answered(std::optional<LoginAnswer> answer) { co_return answer; }
};

int logIn(std::string program, std::string const &host, std::string command)
{
    EngineRuntime engine;
    auto const desk =
        std::make_shared<AskpassDesk>(AskpassDesk::Collaborators{.engine = engine,
                                                                 .mainContext = engine.makeStrand().executor(),
                                                                 .prompter = std::make_shared<ScriptedPrompter>(),
                                                                 .helper = SavedPasswords::ownExecutable(),
                                                                 .folder = [] { return ControlPath::runtimeFolder(); },
                                                                 .keyStore = LoginKeyStore::ofThisSession()});
    std::stop_source giveUp;
    auto login = waitFor(desk->begin(host, {.refused = [giveUp](LoginDesk::Refusal why) mutable {
                                         std::cout << (why == LoginDesk::Refusal::byUser ? "refused by user\n"
                                                                                         : "refused by host\n");
                                         giveUp.request_stop();
                                     }}));
    RemoteShellOptions const options{.loginEnvironment = login->environment()};
    auto arguments = SSHCommandLine::session(options, host, ShellDialect::posix);
    arguments.back() = std::move(command);
    auto client = SSHCommandLine::sessionClient(std::move(program), std::move(arguments), options);
    client.output = PipeEnd();
    client.error = PipeEnd();
    constexpr std::size_t kept = 65'536;
    auto const outcome =
        waitFor(outcomeOf(OneShotCommand::run(engine.io(), std::move(client), kept).withStop(giveUp.get_token())));
    if (!outcome.value)
        return EXIT_FAILURE;
    std::cout << outcome.value->output;
    std::cerr << outcome.value->errors;
    if (!outcome.value->status.isSuccess())
        return EXIT_FAILURE;
    login->succeed();
    return EXIT_SUCCESS;
}

std::string_view nameOf(SSHPassword::Presence presence)
{
    switch (presence) {
    case SSHPassword::Presence::none:
        return "none";
    case SSHPassword::Presence::readable:
        return "readable";
    case SSHPassword::Presence::locked:
        return "locked";
    }
    std::unreachable();
}

bool unlockWhileInput(std::string const &host, SSHPassword::Limit limit)
{
    std::stop_source giveUp;
    std::jthread const reader([giveUp]() mutable {
        std::cin.ignore(std::numeric_limits<std::streamsize>::max());
        giveUp.request_stop();
    });
    return SSHPassword::unlock(host, giveUp.get_token(), limit);
}

int useStore(SSHPassword::Limit limit, std::string_view operation, std::string const &host)
{
    auto const say = [](bool isSo) { std::cout << (isSo ? "yes" : "no"); };
    if (operation == "save") {
        say(SSHPassword::save(std::string{std::istreambuf_iterator<char>(std::cin), {}}, host, limit));
    } else if (operation == "exists") {
        say(SSHPassword::exists(host, limit));
    } else if (operation == "remove") {
        say(SSHPassword::remove(host, limit));
    } else if (operation == "presence") {
        std::cout << nameOf(SSHPassword::presence(host, limit));
    } else if (operation == "unlock") {
        say(SSHPassword::unlock(host, {}, limit));
    } else if (operation == "unlock-while-input") {
        say(unlockWhileInput(host, limit));
    } else {
        auto const password = SSHPassword::read(host, limit);
        std::cout << (password ? password->text() : "(none)");
    }
    return EXIT_SUCCESS;
}

} // namespace
} // namespace tw::test

#if __has_feature(thread_sanitizer)
/// GLib is built without the sanitizer, which does not see its locks and takes what they guard for races.
extern "C" [[gnu::visibility("default")]] char const *__tsan_default_suppressions() // NOLINT: the sanitizer's name
{
    return "called_from_lib:libglib-2.0.so\n"
           "called_from_lib:libgobject-2.0.so\n"
           "called_from_lib:libgio-2.0.so\n"
           "called_from_lib:libsecret-1.so\n";
}
#endif

int main(int count, char **arguments)
{
    if (auto const status = tw::Askpass::run({arguments, arguments + count}))
        return *status;
    if (count == 5 && std::string_view(arguments[1]) == "--provider")
        return tw::test::askHost(arguments[2], arguments[3], arguments[4]);
    if (count == 5 && std::string_view(arguments[1]) == "--login")
        return tw::test::logIn(arguments[2], arguments[3], arguments[4]);
    if (count == 5 && std::string_view(arguments[1]) == "--store")
        return tw::test::useStore(tw::SSHPassword::Limit(std::atoi(arguments[2])), arguments[3], arguments[4]);
    if (count < 2) {
        std::fputs("password_program: no command\n", stderr);
        return 2;
    }
    return tw::test::runCommand(arguments + 1);
}
