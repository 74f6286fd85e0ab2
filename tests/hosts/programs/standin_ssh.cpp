// standin_ssh STARTS FAULT AFTER BYTES PREFACE MESSAGE STATUS [ARGUMENTS OF SSH...]
//
// Runs the command that ssh would run on a host on this machine, with a fault in its output: see StandInSSH.h, which
// writes the command lines.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// What ssh ends with when it is not the command that failed.
constexpr int connectionFailed = 255;

struct Behaviour {
    std::string startsFile;
    std::string fault;
    std::size_t afterBytes = 0;
    std::size_t faultBytes = 0;
    std::string preface;
    std::string message;
    int exitCode = 0;
};

constexpr std::size_t behaviourArguments = 7;

struct Request {
    bool asksForSettings = false;
    bool controlsConnection = false;
    std::string command;
};

[[noreturn]] void fail(char const *what)
{
    std::perror(what);
    std::exit(connectionFailed);
}

Behaviour behaviourOf(std::span<char *const> arguments)
{
    return {.startsFile = arguments[0],
            .fault = arguments[1],
            .afterBytes = std::strtoul(arguments[2], nullptr, 10),
            .faultBytes = std::strtoul(arguments[3], nullptr, 10),
            .preface = arguments[4],
            .message = arguments[5],
            .exitCode = static_cast<int>(std::strtol(arguments[6], nullptr, 10))};
}

/// As ssh reads them: options may stand before and behind the host, "--" ends them, and the rest is the command.
Request requestOf(std::span<char *const> arguments)
{
    constexpr std::string_view withValue = "BbcDEeFIiJLlmOopQRSWw";
    auto const takesValue = [=](char option) { return withValue.find(option) != std::string_view::npos; };
    Request request;
    bool optionsEnded = false;
    bool hostIsKnown = false;
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        std::string_view const word = arguments[index];
        if (!optionsEnded && word == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && word.size() > 1 && word.starts_with('-')) {
            request.asksForSettings |= word == "-G";
            auto const letter = std::ranges::find_if(word.substr(1), takesValue);
            if (letter == word.end())
                continue;
            request.controlsConnection |= *letter == 'O';
            // The value follows in the same word or is the next one.
            index += letter + 1 == word.end() ? 1 : 0;
        } else if (!hostIsKnown) {
            hostIsKnown = true;
        } else {
            request.command += request.command.empty() ? "" : " ";
            request.command += word;
            optionsEnded = true;
        }
    }
    return request;
}

/// In one write, so that two at once do not mix.
void recordStart(std::string const &file, std::span<char *const> arguments)
{
    auto record = std::to_string(arguments.size()) + '\0';
    for (auto const *argument : arguments)
        record += std::string(argument) + '\0';
    auto const target = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (target < 0 || ::write(target, record.data(), record.size()) != static_cast<ssize_t>(record.size()))
        fail("standin_ssh: starts");
    ::close(target);
}

void say(int where, std::string_view text)
{
    while (!text.empty()) {
        auto const written = ::write(where, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            std::exit(connectionFailed);
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}

struct Command {
    pid_t process;
    int output;
};

Command start(std::string const &text)
{
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        fail("standin_ssh: pipe");
    auto const process = ::fork();
    if (process < 0)
        fail("standin_ssh: fork");
    if (process == 0) {
        // A session of its own, as on a host; and not left behind if this program is killed.
        ::setsid();
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::dup2(pipe[1], STDOUT_FILENO);
        if (text.empty())
            ::execl("/bin/sh", "sh", nullptr);
        else
            ::execl("/bin/sh", "sh", "-c", text.c_str(), nullptr);
        fail("standin_ssh: sh");
    }
    ::close(pipe[1]);
    return {process, pipe[0]};
}

int exitCodeOf(Command const &command)
{
    int status = 0;
    while (::waitpid(command.process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : connectionFailed;
}

/// Passes the command's output on, with the fault in it.
class Line {
public:
    Line(Behaviour const &wanted, Command const &running) : behaviour(wanted), command(running) {}

    void pass(std::string_view bytes)
    {
        if (hasHadFault)
            return passBehindFault(bytes);
        auto const before = bytes.substr(0, untilFault());
        say(STDOUT_FILENO, before);
        passed += before.size();
        if (untilFault() == 0) {
            haveFault();
            passBehindFault(bytes.substr(before.size()));
        }
    }

private:
    std::size_t untilFault() const
    {
        return behaviour.fault == "none" ? std::string_view::npos : behaviour.afterBytes - passed;
    }

    void haveFault()
    {
        hasHadFault = true;
        say(STDERR_FILENO, behaviour.message);
        if (behaviour.fault == "cut") {
            ::kill(-command.process, SIGKILL);
            ::kill(command.process, SIGKILL); // it may not have got to its session yet
            std::exit(behaviour.exitCode);
        } else if (behaviour.fault == "stall") {
            for (;;)
                ::pause();
        } else if (behaviour.fault == "flood") {
            say(STDOUT_FILENO, std::string(behaviour.faultBytes, 'x'));
        } else if (behaviour.fault == "corrupt") {
            toCorrupt = behaviour.faultBytes;
        }
    }

    void passBehindFault(std::string_view bytes)
    {
        std::string corrupted(bytes.substr(0, toCorrupt));
        for (auto &byte : corrupted)
            byte = static_cast<char>(~byte);
        toCorrupt -= corrupted.size();
        say(STDOUT_FILENO, corrupted);
        say(STDOUT_FILENO, bytes.substr(corrupted.size()));
    }

    Behaviour const &behaviour;
    Command const command;
    std::size_t passed = 0;
    std::size_t toCorrupt = 0;
    bool hasHadFault = false;
};

int run(Behaviour const &behaviour, Request const &request)
{
    say(STDOUT_FILENO, behaviour.preface);
    if (behaviour.fault == "none" || behaviour.fault == "refuse")
        say(STDERR_FILENO, behaviour.message);
    if (behaviour.fault == "refuse")
        return behaviour.exitCode;

    auto const command = start(request.command);
    Line line(behaviour, command);
    // Nothing is to be said before a fault that comes after no bytes.
    line.pass({});
    std::array<char, 65536> buffer{};
    for (;;) {
        auto const got = ::read(command.output, buffer.data(), buffer.size());
        if (got > 0)
            line.pass({buffer.data(), static_cast<std::size_t>(got)});
        else if (got == 0 || errno != EINTR)
            break;
    }
    return exitCodeOf(command);
}

} // namespace

int main(int count, char **arguments)
{
    std::span<char *const> const all(arguments + 1, static_cast<std::size_t>(std::max(count - 1, 0)));
    if (all.size() < behaviourArguments) {
        std::fputs("standin_ssh: too few arguments\n", stderr);
        return connectionFailed;
    }
    auto const behaviour = behaviourOf(all);
    auto const forSSH = all.subspan(behaviourArguments);
    auto const request = requestOf(forSSH);
    if (request.asksForSettings)
        return 0; // the user has set nothing
    recordStart(behaviour.startsFile, forSSH);
    if (request.controlsConnection) {
        std::fputs("Control socket connect: No such file or directory\n", stderr);
        return connectionFailed;
    }
    return run(behaviour, request);
}
