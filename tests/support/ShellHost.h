#pragma once

#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Provider/FileSystemReader.h"
#include "TWCore/Provider/FileSystemWriter.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tw::test {

/// A host whose commands a shell of this machine runs, and whose files are this machine's. Nothing but commands and
/// whole files works.
class ShellHost final : public FileSystemReader, public FileSystemWriter, public CommandHost {
public:
    explicit ShellHost(EngineRuntime &runtime) : engine(runtime) {}

    std::vector<std::string> requests; ///< "run", "download", "upload", in their order
    /// Called with each request before it is done. It may throw in its place.
    std::function<void(std::string const &request)> before = [](auto const &) {};
    /// Called when a command is done, whose answer it may keep back by throwing.
    std::function<void()> after = [] {};

    std::string identifier() const override { return "ssh:web"; }

    std::string displayName() const override { return "web"; }

    std::string host() const override { return "web"; }

    int maxUsefulDepth() const override { return 1; }

    Task<Listings> fetch(std::string, int, FetchPriority) override { throw std::logic_error("no listings here"); }

    Task<std::string> readChunk(std::string, std::int64_t, std::size_t) override { return none<std::string>(); }

    Task<std::int64_t> fileSize(std::string path) override
    {
        co_return static_cast<std::int64_t>(std::filesystem::file_size(path));
    }

    Task<void> download(std::string path, std::string localPath) override
    {
        return copyFile(this, "download", std::move(path), std::move(localPath));
    }

    Task<void> upload(std::string localPath, std::string path) override
    {
        return copyFile(this, "upload", std::move(localPath), std::move(path));
    }

    Task<ShellDialect> dialect() override { co_return ShellDialect::posix; }

    Task<std::string> defaultDirectory() override { co_return "/"; }

    Task<ArchiveCapability> archiveCapability() override { co_return ArchiveCapability(); }

    Task<std::vector<std::string>> transportOptions() override { co_return std::vector<std::string>(); }

    Task<bool> logsInByItself() override { co_return true; }

    Task<CommandResult> runCommand(HostCommand command) override { return runHere(this, std::move(command.text)); }

    bool deleteIsReversible() const override { return false; }

    Task<void> makeDirectory(std::string) override { return none<void>(); }

    Task<void> removeEmptyFolder(std::string) override { return none<void>(); }

    Task<void> remove(std::vector<std::string>) override { return none<void>(); }

    Task<void> rename(std::string, std::string) override { return none<void>(); }

    Task<void> moveAll(std::vector<Move>, Existing) override { return none<void>(); }

    Task<void> removePermanently(std::vector<std::string>, LockedFolders) override { return none<void>(); }

    Task<FolderFacts> factsAbout(std::string, std::vector<std::string>) override { return none<FolderFacts>(); }

    Task<Survey> survey(std::string, std::vector<std::string>, Survey::Detail) override { return none<Survey>(); }

    Task<void> sync(std::string) override { return none<void>(); }

private:
    template <class T>
    static Task<T> none()
    {
        throw std::logic_error("this host does nothing but run commands");
    }

    static Task<void> copyFile(ShellHost *self, std::string what, std::string from, std::string to)
    {
        self->requests.push_back(what);
        self->before(what);
        std::ofstream(to, std::ios::trunc) << contentOf(from); // keeps the mode of the target
        co_return;
    }

    static Task<std::string> gather(std::shared_ptr<std::string> all, std::string bytes)
    {
        *all += bytes;
        co_return bytes;
    }

    static Task<CommandResult> runHere(ShellHost *self, std::string text)
    {
        self->requests.emplace_back("run");
        self->before("run");
        auto const output = std::make_shared<std::string>();
        ChildCommand shell{.program = "/bin/bash", .arguments = {"-s"}};
        shell.input = PipeEnd{};
        shell.output = PipeEnd{};
        auto const ended = co_await OneShotCommand::run(
            self->engine.io(), std::move(shell), 1U << 20U,
            [output](std::string bytes) { return gather(output, std::move(bytes)); },
            "( eval " + quote(ShellDialect::posix, text) + " ) 2>&1 </dev/null\n");
        self->after();
        co_return CommandResult{.output = *output, .status = ended.status.number};
    }

    EngineRuntime &engine;
};

} // namespace tw::test
