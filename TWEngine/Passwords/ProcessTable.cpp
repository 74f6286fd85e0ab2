#include "TWEngine/Passwords/ProcessTable.h"

#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/Uninterrupted.h"

#include <charconv>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tw {

namespace {

std::string fileOf(pid_t process, char const *name)
{
    return "/proc/" + std::to_string(process) + '/' + name;
}

std::optional<ProcessTable::Executable> executable(pid_t process)
{
    constexpr std::string_view deleted = " (deleted)";
    auto const link = fileOf(process, "exe");
    std::string path(PATH_MAX, '\0');
    auto const length = ::readlink(link.c_str(), path.data(), path.size());
    struct stat status{};
    if (length <= 0 || static_cast<std::size_t>(length) == path.size() || ::stat(link.c_str(), &status) != 0)
        return std::nullopt;
    path.resize(static_cast<std::size_t>(length));
    if (path.ends_with(deleted))
        return std::nullopt;
    return ProcessTable::Executable{.path = std::move(path), .device = status.st_dev, .inode = status.st_ino};
}

std::optional<pid_t> parent(pid_t process)
{
    FileDescriptor const file(::open(fileOf(process, "stat").c_str(), O_RDONLY | O_CLOEXEC));
    // Some fifty numbers and a short name, answered in one piece.
    std::string text(2048, '\0');
    auto const length = file ? uninterrupted([&] { return ::read(file.get(), text.data(), text.size()); }) : -1;
    if (length < 0)
        return std::nullopt;
    text.resize(static_cast<std::size_t>(length));
    return ProcessTable::parentInStat(text);
}

} // namespace

ProcessTable ProcessTable::ofThisSystem()
{
    return {.executableOf = executable, .parentOf = parent};
}

std::optional<pid_t> ProcessTable::parentInStat(std::string_view text)
{
    // "7 (name) S 1 ...": the process chose its name itself, and the name may have brackets and blanks in it.
    auto const nameEnd = text.rfind(')');
    if (nameEnd == std::string_view::npos)
        return std::nullopt;
    auto rest = text.substr(nameEnd + 1);
    constexpr std::size_t beforeParent = 3; // a blank, the state in one letter, a blank
    if (rest.size() <= beforeParent || rest[0] != ' ' || rest[2] != ' ')
        return std::nullopt;
    rest.remove_prefix(beforeParent);
    pid_t parent = 0;
    auto const [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), parent);
    if (error != std::errc() || (end != rest.data() + rest.size() && *end != ' '))
        return std::nullopt;
    return parent;
}

} // namespace tw
