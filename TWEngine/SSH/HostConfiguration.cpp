#include "TWEngine/SSH/HostConfiguration.h"

#include "TWEngine/Platform/HomeFolder.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/TimeOut.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "TWEngine/SSH/PrintedSettings.h"

#include <algorithm>

#include <sys/stat.h>

namespace tw {

namespace {

/// More hosts than a person has; each is some hundred bytes.
constexpr std::size_t mostHosts = 1024;

/// A configuration in more pieces is read anew each time.
constexpr std::size_t mostPaths = 128;

/// ssh prints some 5 KiB, and a line for each pattern that matches.
constexpr std::size_t mostOutput = std::size_t{256} * 1024;

/// For a master that is there to answer. A frozen one must not hold up the host: its own connection is tried then.
constexpr std::chrono::seconds masterLimit{2};

std::string folderOf(std::string const &path)
{
    return path.substr(0, path.rfind('/'));
}

/// What must not change for an answer to stay right: what ssh has read, what it looks for, and the folders of both, in
/// which a further file may appear.
std::vector<std::string> watched(std::vector<std::string> read, std::string const &home)
{
    read.emplace_back("/etc/ssh/ssh_config");
    read.push_back(home + "/.ssh/config");
    std::vector<std::string> all = read;
    for (auto const &file : read)
        all.push_back(folderOf(file));
    std::ranges::sort(all);
    auto const again = std::ranges::unique(all);
    all.erase(again.begin(), again.end());
    return all;
}

std::array<std::int64_t, 5> stateOf(std::string const &path)
{
    struct stat status{};
    if (::stat(path.c_str(), &status) != 0)
        return {};
    return {static_cast<std::int64_t>(status.st_dev), static_cast<std::int64_t>(status.st_ino), status.st_size,
            status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

/// In a session of its own, so that what it runs ends with it.
ChildCommand client(std::string program, std::vector<std::string> arguments)
{
    return {.program = std::move(program),
            .arguments = std::move(arguments),
            .output = PipeEnd(),
            .error = PipeEnd(),
            .session = ChildCommand::Session::own,
            .end = ChildCommand::End::withProgram};
}

std::string homeOfSSH()
{
    auto home = HomeFolder::ofAccount();
    return home.empty() ? HomeFolder::path() : home;
}

Task<OneShotCommand::Result> runClient(EngineRuntime *engine, std::string program, std::vector<std::string> arguments)
{
    return OneShotCommand::run(engine->io(), client(std::move(program), std::move(arguments)), mostOutput);
}

Task<bool> checkMaster(EngineRuntime *engine, std::string program, std::string host, std::string controlPath)
{
    auto const outcome = co_await outcomeOf(
        withTimeOut(engine->clock(), masterLimit,
                    runClient(engine, std::move(program),
                              {"-o", "ControlPath=" + controlPath, "-O", "check", "--", std::move(host)})));
    auto const isOpen = outcome.value && outcome.value->status.isSuccess();
    co_return isOpen;
}

} // namespace

HostConfiguration::HostConfiguration(EngineRuntime &runtime, std::string program, std::chrono::nanoseconds atMost)
    : engine(runtime), sshProgram(std::move(program)), limit(atMost), strand(runtime.makeStrand()), answers(mostHosts)
{
}

Task<HostSettings> HostConfiguration::settingsOf(std::string host)
{
    return onStrand(strand, settingsHere(shared_from_this(), std::move(host)));
}

Task<bool> HostConfiguration::isMasterOpen(std::string host, std::string controlPath) const
{
    return checkMaster(&engine, sshProgram, std::move(host), std::move(controlPath));
}

Task<HostSettings> HostConfiguration::settingsHere(Self self, std::string host)
{
    auto const context = co_await currentContext();
    auto outcome = co_await outcomeOf(withTimeOut(self->engine.clock(), self->limit, keptOrNew(self, std::move(host))));
    if (context.stop.stop_requested())
        throw Cancelled();
    co_return outcome.value ? std::move(*outcome.value) : HostSettings();
}

Task<HostSettings> HostConfiguration::keptOrNew(Self self, std::string host)
{
    if (auto const *const kept = self->answers.find(host)) {
        auto const before = *kept;
        std::vector<std::string> paths;
        for (auto const &stamp : *before.readFrom)
            paths.push_back(stamp.path);
        auto const now = co_await stampsOf(&self->engine, std::move(paths));
        if (now == *before.readFrom)
            co_return before.settings;
    }
    auto const answer = co_await ask(&self->engine, self->sshProgram, host);
    if (answer.readFrom)
        self->answers.set(host, answer);
    co_return answer.settings;
}

Task<HostConfiguration::Answer> HostConfiguration::ask(EngineRuntime *engine, std::string sshProgram, std::string host)
{
    auto const home = co_await engine->workers().run(WorkPriority::interactive, homeOfSSH);
    // With a command, since ssh refuses to print a ForkAfterAuthentication without one; and two commands it refuses
    // too.
    auto const result =
        co_await runClient(engine, std::move(sshProgram),
                           {"-o", "LogLevel=DEBUG1", "-o", "RemoteCommand=none", "-G", "--", std::move(host), "true"});
    if (!result.status.isSuccess())
        co_return Answer();
    Answer answer{PrintedSettings::read(result.output, home), std::nullopt};
    auto read = PrintedSettings::filesIn(result.errors);
    if (!read)
        co_return answer;
    auto paths = watched(std::move(*read), home);
    if (paths.size() <= mostPaths)
        answer.readFrom = co_await stampsOf(engine, std::move(paths));
    co_return answer;
}

Task<HostConfiguration::Stamps> HostConfiguration::stampsOf(EngineRuntime *engine, std::vector<std::string> paths)
{
    Stamps stamps;
    for (auto const &path : paths) {
        auto const state = co_await engine->files().run(path, FileLanes::LastLink::follow, WorkPriority::interactive,
                                                        [](std::string const &place) { return stateOf(place); });
        stamps.push_back({path, state});
    }
    co_return stamps;
}

} // namespace tw
