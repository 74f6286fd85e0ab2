// How a file of a host is transferred whole, over an ssh client of its own.

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ReadError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "TWEngine/SSH/TransferFile.h"

namespace tw {

namespace {

/// Of a client's words, as much is kept.
constexpr std::size_t keptBytes = 65536;

std::string lastWords(OneShotCommand::Result const &result)
{
    return std::string(trimmed(repaired(result.errors)));
}

/// The words of a login shell lose the line ends behind them, and would name another file.
bool canBeNamedInACommand(ShellDialect dialect, std::string const &path)
{
    return dialect == ShellDialect::powershell || !path.ends_with('\n');
}

constexpr auto unnameable = "a name that ends with a line end cannot be transferred";

Task<void> asBestItCan(Task<CommandResult> work)
{
    co_await outcomeOf(std::move(work));
}

} // namespace

Task<void> SSHProvider::download(std::string path, std::string localPath)
{
    return alone(downloadHere(shared_from_this(), std::move(path), std::move(localPath)));
}

Task<void> SSHProvider::downloadHere(Self self, std::string path, std::string localPath)
{
    if (!canBeNamedInACommand(self->sessions->speaks(), path))
        throw ReadError::NotReadable(path, unnameable);
    auto const file = co_await TransferFile::open(self->engine, localPath, TransferFile::Purpose::toWrite);
    if (!file)
        throw ReadError::NotReadable(localPath, "cannot create local file");
    auto client = SSHCommandLine::transferClient(
        self->sshProgram,
        SSHCommandLine::download(self->sharingOptions(), self->destination, self->sessions->speaks(), path));
    client.output = PipeEnd{};
    client.error = PipeEnd{};
    auto const result = co_await OneShotCommand::run(self->engine.io(), std::move(client), keptBytes,
                                                     TransferFile::writer(self->engine, file, localPath));
    if (!result.status.isSuccess())
        throw ReadError::NotReadable(path, lastWords(result));
    co_await TransferFile::finish(self->engine, file, localPath);
}

Task<void> SSHProvider::upload(std::string localPath, std::string path)
{
    return alone(uploadHere(shared_from_this(), std::move(localPath), std::move(path)));
}

Task<void> SSHProvider::uploadHere(Self self, std::string localPath, std::string path)
{
    if (!canBeNamedInACommand(self->sessions->speaks(), path))
        throw FileOperationError::Failed("upload", path, unnameable);
    auto const endedBefore = self->sessions->disconnections();
    auto const file = co_await TransferFile::open(self->engine, localPath, TransferFile::Purpose::toRead);
    if (!file)
        throw ReadError::NotReadable(localPath, "cannot open local file");
    auto const command = SSHCommandLine::removeUploadTemporary(self->sessions->speaks(), path);
    auto removal = self->sessions->asking<CommandResult>(
        Choice::interactive, [command](RemoteShell &shell) { return shell.run(command, std::nullopt); });
    auto client = SSHCommandLine::transferClient(
        self->sshProgram,
        SSHCommandLine::upload(self->sharingOptions(), self->destination, self->sessions->speaks(), path, file->size));
    client.input = DescriptorEnd{file->descriptor.get()};
    client.error = PipeEnd{};
    auto const outcome = co_await outcomeOf(OneShotCommand::run(self->engine.io(), std::move(client), keptBytes));
    if (outcome.failure) {
        // A caller that stops the upload does not wait for the removal.
        if (self->sessions->disconnections() == endedBefore)
            spawn({self->strand.executor(), {}}, asBestItCan(std::move(removal)));
        std::rethrow_exception(outcome.failure);
    }
    if (outcome.value->status.isSuccess())
        co_return;
    co_await outcomeOf(std::move(removal));
    auto const words = lastWords(*outcome.value);
    // The check that all of it has arrived says nothing.
    throw FileOperationError::Failed("upload", path, words.empty() ? "not all of the file has arrived" : words);
}

} // namespace tw
