// A program that has saved passwords, as the real one has: ssh asks it for them when it has started that ssh.
//
// password_program COMMAND ARGUMENT...          runs COMMAND and ends as it does
// password_program --provider SSH HOST COMMAND  reaches HOST through an SSHProvider with SSH as the client, and prints
//                                               what COMMAND says there
// password_program --store LIMIT OPERATION HOST save, read, exists, presence, unlock or remove, within LIMIT
//                                               milliseconds; prints the result. A password to be saved is on standard
//                                               input; "unlock-while-input" gives up when standard input ends

#include "TWEngine/Passwords/Askpass.h"
#include "TWEngine/Passwords/SSHPassword.h"
#include "TWEngine/Runtime/EngineRuntime.h"
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
    if (count == 5 && std::string_view(arguments[1]) == "--store")
        return tw::test::useStore(tw::SSHPassword::Limit(std::atoi(arguments[2])), arguments[3], arguments[4]);
    if (count < 2) {
        std::fputs("password_program: no command\n", stderr);
        return 2;
    }
    return tw::test::runCommand(arguments + 1);
}
