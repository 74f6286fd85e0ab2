#include "TWEngine/Passwords/Askpass.h"

#include "TWEngine/Passwords/AskpassGuard.h"
#include "TWEngine/Passwords/AskpassRequest.h"
#include "TWEngine/Passwords/LoginPrompt.h"
#include "TWEngine/Passwords/SSHPassword.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/Uninterrupted.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <array>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tw::Askpass {

namespace {

using Arguments = std::span<char const *const>;

/// With which ssh says that it wants a yes, or only has something to say.
constexpr auto hintVariable = "SSH_ASKPASS_PROMPT";

/// More than anybody types.
constexpr std::size_t longestAnswer = 4096;

/// Empty if it is unset.
std::string variable(char const *name)
{
    auto const *const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): there is one thread
    return value ? value : "";
}

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

bool print(std::optional<SecretText> const &line)
{
    return line && WholeFile::write(STDOUT_FILENO, line->text()) == 0 && WholeFile::write(STDOUT_FILENO, "\n") == 0;
}

/// The account of what is asked for; nothing for a question that nothing saved answers.
std::optional<std::string> accountFor(Arguments arguments, ProcessTable const &processes)
{
    if (arguments.size() != 2 || !variable(hintVariable).empty())
        return std::nullopt;
    auto const question = LoginPrompt::read(arguments[1], {});
    if (!question.canBeRemembered)
        return std::nullopt;
    if (question.kind == LoginQuestion::Kind::passphrase)
        return question.keyPath;
    // The saved password is the target's.
    if (AskpassGuard::calledForJumpHost(::getpid(), processes))
        return std::nullopt;
    return variable(accountVariable);
}

bool printSaved(Arguments arguments, ProcessTable const &processes)
{
    auto const account = accountFor(arguments, processes);
    if (!account)
        return false;
    keepMemoryPrivate();
    return print(SSHPassword::read(*account));
}

FileDescriptor connectTo(std::string const &path)
{
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (path.size() >= sizeof address.sun_path)
        return FileDescriptor();
    path.copy(static_cast<char *>(address.sun_path), path.size());
    if (!socket || ::connect(socket.get(), reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0)
        return FileDescriptor();
    return socket;
}

/// Waits until the running program has answered, or has hung up before the end of the line.
std::optional<SecretText> answerOn(int connection)
{
    std::array<char, longestAnswer> bytes{};
    std::size_t size = 0;
    ssize_t count = 0;
    do {
        count = uninterrupted([&] { return ::read(connection, bytes.data() + size, bytes.size() - size); });
        size += count > 0 ? static_cast<std::size_t>(count) : 0;
    } while (count > 0);
    std::string_view const line(bytes.data(), size);
    std::optional<SecretText> answer;
    if (line.ends_with('\n'))
        answer.emplace(line.substr(0, line.size() - 1));
    ::explicit_bzero(bytes.data(), bytes.size());
    return answer;
}

bool printAnswer(Arguments arguments)
{
    if (arguments.size() != 2)
        return false;
    keepMemoryPrivate();
    auto const connection = connectTo(variable(socketVariable));
    AskpassRequest const request{variable(tokenVariable), variable(hintVariable), arguments[1]};
    return connection && WholeFile::write(connection.get(), request.encoded()) == 0 &&
           print(answerOn(connection.get()));
}

} // namespace

std::optional<int> run(Arguments arguments)
{
    auto const isForLogin = !variable(socketVariable).empty();
    if (!isForLogin && variable(accountVariable).empty())
        return std::nullopt;
    // An ssh that is gone is a failure like any other.
    std::signal(SIGPIPE, SIG_IGN);
    auto const processes = ProcessTable::ofThisSystem();
    if (!AskpassGuard::calledByOurOwnSSH(::getpid(), processes) || !hasOutput())
        return EXIT_FAILURE;
    auto const isPrinted = isForLogin ? printAnswer(arguments) : printSaved(arguments, processes);
    return isPrinted ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace tw::Askpass
