#include "TWEngine/Runtime/ChildLaunch.h"

#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/SpawnError.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

namespace tw {

namespace {

/// The first descriptor that no child is to have.
constexpr int firstOfOurs = 3;

void require(int error, std::string const &subject)
{
    if (error != 0)
        throw SpawnError(error, subject);
}

/// What the child does between its birth and the program.
class Actions {
public:
    Actions() { require(posix_spawn_file_actions_init(&actions), "posix_spawn"); }

    Actions(Actions const &) = delete;
    Actions &operator=(Actions const &) = delete;

    ~Actions() { posix_spawn_file_actions_destroy(&actions); }

    void enterDirectory(int directory)
    {
        require(posix_spawn_file_actions_addfchdir_np(&actions, directory), "posix_spawn");
    }

    void connect(std::array<int, 3> const &standard)
    {
        for (int target = 0; target < firstOfOurs; ++target) {
            auto const source = standard[static_cast<std::size_t>(target)];
            require(posix_spawn_file_actions_adddup2(&actions, source, target), "posix_spawn");
        }
        // All of ours are closed on exec anyway. Libraries of the program are not ours.
        require(posix_spawn_file_actions_addclosefrom_np(&actions, firstOfOurs), "posix_spawn");
    }

    posix_spawn_file_actions_t const *get() const noexcept { return &actions; }

private:
    posix_spawn_file_actions_t actions;
};

class Attributes {
public:
    explicit Attributes(ChildCommand::Session session)
    {
        require(posix_spawnattr_init(&attributes), "posix_spawn");
        // Signals that we, or the process that started us, ignore or block would be inherited: a child that does not
        // die of a broken pipe writes on without end.
        sigset_t all;
        sigfillset(&all);
        posix_spawnattr_setsigdefault(&attributes, &all);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes, &none);
        int flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
        if (session == ChildCommand::Session::own)
            flags |= POSIX_SPAWN_SETSID;
        posix_spawnattr_setflags(&attributes, static_cast<short>(flags));
    }

    Attributes(Attributes const &) = delete;
    Attributes &operator=(Attributes const &) = delete;

    ~Attributes() { posix_spawnattr_destroy(&attributes); }

    posix_spawnattr_t const *get() const noexcept { return &attributes; }

private:
    posix_spawnattr_t attributes;
};

/// Opened here, so that a directory that is not there is not taken for a missing program.
FileDescriptor openDirectory(std::string const &path)
{
    FileDescriptor directory(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!directory || faccessat(directory.get(), ".", X_OK, AT_EACCESS) != 0)
        throw SpawnError(errno, path);
    return directory;
}

/// The pointers that exec wants, ending in null. They point into `texts`.
std::vector<char *> pointersTo(std::vector<std::string> &texts)
{
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (auto &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// The path of the program of TWEngine/Starter; empty if this program's own path is not known.
std::string const &starter()
{
    static std::string const path = [] {
        std::error_code unknown;
        auto const own = std::filesystem::read_symlink("/proc/self/exe", unknown);
        return unknown ? std::string() : (own.parent_path() / TARNWICK_STARTER).lexically_normal().string();
    }();
    return path;
}

/// The program that is started first, and all that follows it.
std::vector<std::string> argumentsOf(ChildCommand const &command)
{
    std::vector<std::string> texts;
    // Without the starter the program still runs, and ends when its input does.
    if (command.end == ChildCommand::End::withProgram && access(starter().c_str(), X_OK) == 0) {
        // Otherwise the starter would fail in place of the start.
        if (access(command.program.c_str(), X_OK) != 0)
            throw SpawnError(errno, command.program);
        texts = {starter(), std::to_string(getpid())};
    }
    texts.push_back(command.program);
    texts.insert(texts.end(), command.arguments.begin(), command.arguments.end());
    return texts;
}

std::vector<std::string> textsOf(Environment const &environment)
{
    std::vector<std::string> texts;
    texts.reserve(environment.size());
    for (auto const &[name, value] : environment)
        texts.push_back(name + '=' + value);
    return texts;
}

/// The system would cut such a text at the NUL, and run something else than was asked for.
void refuseNulBytes(std::vector<std::string> const &texts, std::string const &subject)
{
    auto const hasNul = [](std::string const &text) { return text.find('\0') != std::string::npos; };
    if (std::ranges::any_of(texts, hasNul))
        throw SpawnError(EINVAL, subject);
}

} // namespace

pid_t launchChild(ChildCommand const &command, std::array<int, 3> const &standard)
{
    auto arguments = argumentsOf(command);
    auto environment = command.environment ? textsOf(*command.environment) : std::vector<std::string>();
    refuseNulBytes(arguments, command.program);
    refuseNulBytes(environment, command.program);
    refuseNulBytes({command.workingDirectory}, command.workingDirectory);

    FileDescriptor directory;
    Actions actions;
    if (command.workingFolder) {
        actions.enterDirectory(command.workingFolder->get());
    } else if (!command.workingDirectory.empty()) {
        directory = openDirectory(command.workingDirectory);
        actions.enterDirectory(directory.get());
    }
    actions.connect(standard);

    Attributes const attributes(command.session);
    auto const argumentPointers = pointersTo(arguments);
    auto const environmentPointers = pointersTo(environment);
    pid_t child = 0;
    require(posix_spawnp(&child, arguments.front().c_str(), actions.get(), attributes.get(), argumentPointers.data(),
                         command.environment ? environmentPointers.data() : environ),
            command.program);
    return child;
}

} // namespace tw
