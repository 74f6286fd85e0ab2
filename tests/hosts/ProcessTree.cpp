#include "tests/hosts/ProcessTree.h"

#include "TWEngine/Runtime/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <set>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

// The header of glibc 2.36 forgets to say that these are C functions.
extern "C" {
#include <sys/pidfd.h>
}

namespace tw::test {

namespace {

std::optional<pid_t> numberIn(std::string const &name)
{
    pid_t number = 0;
    auto const [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error != std::errc() || end != name.data() + name.size())
        return std::nullopt;
    return number;
}

/// Empty if the process goes while it is read, which is an error of the read; a stream would throw it.
std::string statusOf(pid_t process)
{
    FileDescriptor const file(::open(("/proc/" + std::to_string(process) + "/stat").c_str(), O_RDONLY | O_CLOEXEC));
    // Some fifty numbers and a short name, answered in one piece.
    std::string text(2048, '\0');
    auto const length = file ? ::read(file.get(), text.data(), text.size()) : 0;
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    return text;
}

std::vector<ProcessRecord> allProcesses()
{
    std::vector<ProcessRecord> all;
    for (auto const &entry : std::filesystem::directory_iterator("/proc")) {
        auto const number = numberIn(entry.path().filename().string());
        if (!number)
            continue;
        if (auto record = recordOf(*number))
            all.push_back(std::move(*record));
    }
    return all;
}

} // namespace

std::optional<ProcessRecord> recordOf(pid_t process)
{
    auto const text = statusOf(process);
    // The name stands in brackets and may have some itself.
    auto const nameBegin = text.find('(');
    auto const nameEnd = text.rfind(')');
    if (nameBegin == std::string::npos || nameEnd == std::string::npos)
        return std::nullopt;

    ProcessRecord record{.id = process, .name = text.substr(nameBegin + 1, nameEnd - nameBegin - 1)};
    std::istringstream rest(text.substr(nameEnd + 1));
    rest >> record.state >> record.parent;
    // What stands between the parent and the time of birth.
    constexpr int fieldsBetween = 17;
    std::string skipped;
    for (int field = 0; field < fieldsBetween; ++field)
        rest >> skipped;
    rest >> record.born;
    return rest ? std::optional(record) : std::nullopt;
}

std::vector<ProcessRecord> descendantsOf(pid_t ancestor)
{
    auto const all = allProcesses();
    std::set<pid_t> family{ancestor};
    std::vector<ProcessRecord> found;
    // Children may have lower numbers than their parents, so it takes as many rounds as there are generations.
    for (auto before = found.size() + 1; before != found.size();) {
        before = found.size();
        for (auto const &process : all) {
            if (family.contains(process.parent) && family.insert(process.id).second)
                found.push_back(process);
        }
    }
    return found;
}

void killAndWait(ProcessRecord const &process)
{
    FileDescriptor const handle(::pidfd_open(process.id, 0));
    if (!handle) {
        if (errno == ESRCH)
            return;
        throw std::system_error(errno, std::generic_category(), "pidfd_open");
    }
    // The number may have gone to another process. The handle stays with the process that it was opened for.
    auto const now = recordOf(process.id);
    if (!now || now->born != process.born)
        return;
    ::pidfd_send_signal(handle.get(), SIGKILL, nullptr, 0);
    pollfd ended{.fd = handle.get(), .events = POLLIN, .revents = 0};
    while (::poll(&ended, 1, -1) < 0 && errno == EINTR) {
    }
}

} // namespace tw::test
