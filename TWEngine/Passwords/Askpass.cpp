#include "TWEngine/Passwords/Askpass.h"

#include "TWEngine/Passwords/AskpassGuard.h"
#include "TWEngine/Passwords/AskpassPrompt.h"
#include "TWEngine/Passwords/SSHPassword.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tw::Askpass {

namespace {

/// A core file would have the password in it.
void keepMemoryPrivate()
{
    rlimit const none{.rlim_cur = 0, .rlim_max = 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::prctl(PR_SET_DUMPABLE, 0);
}

/// Without an output its number would go to the next thing that is opened, such as the socket of the bus.
bool hasOutput()
{
    return ::fcntl(STDOUT_FILENO, F_GETFD) >= 0;
}

bool isQuestionForPassword(std::span<char const *const> arguments)
{
    // ssh sets it where it wants a yes or only has something to say.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
    return !std::getenv("SSH_ASKPASS_PROMPT") && arguments.size() == 2 && AskpassPrompt::asksForPassword(arguments[1]);
}

bool mayAnswer(std::span<char const *const> arguments)
{
    auto const processes = ProcessTable::ofThisSystem();
    return AskpassGuard::calledByOurOwnSSH(::getpid(), processes) &&
           !AskpassGuard::calledForJumpHost(::getpid(), processes) && isQuestionForPassword(arguments) && hasOutput();
}

} // namespace

std::optional<int> run(std::span<char const *const> arguments)
{
    auto const *const account = std::getenv(accountVariable); // NOLINT(concurrency-mt-unsafe): there is one thread
    if (!account || *account == '\0')
        return std::nullopt;
    // An ssh that is gone is a failure like any other.
    std::signal(SIGPIPE, SIG_IGN);
    if (!mayAnswer(arguments))
        return EXIT_FAILURE;
    keepMemoryPrivate();
    auto const password = SSHPassword::read(account);
    auto const isPrinted = password && WholeFile::write(STDOUT_FILENO, password->text()) == 0 &&
                           WholeFile::write(STDOUT_FILENO, "\n") == 0;
    return isPrinted ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace tw::Askpass
