// What is done over ssh clients of its own: files are transferred whole, and trees are surveyed.

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ReadError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/SurveyQuestion.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/DownloadEnd.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "TWEngine/SSH/SSHProvider.h"
#include "TWEngine/SSH/TransferFile.h"
#include "TWEngine/Transfer/HostSlots.h"

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

/// What a login shell that runs no command may report as success.
constexpr auto notRun = "the host has not sent all of the file";

Task<std::string> passOn(std::shared_ptr<DownloadEnd> end, OneShotCommand::Taker writer, std::string bytes)
{
    auto content = end->contentOf(bytes);
    if (!content.empty())
        co_await writer(std::move(content));
    co_return bytes;
}

Task<std::string> readSurvey(std::shared_ptr<SurveyReader> reader, std::string bytes)
{
    reader->read(bytes);
    co_return bytes;
}

Task<void> asBestItCan(Task<CommandResult> work)
{
    co_await outcomeOf(std::move(work));
}

} // namespace

Task<void> SSHProvider::beside(Task<void> work)
{
    return onStrand(strand, besideHere(shared_from_this(), std::move(work)));
}

Task<void> SSHProvider::besideHere(Self self, Task<void> work)
{
    auto const context = co_await currentContext();
    auto const running = SharedTask<void>::start(context.executor, withClient(self, std::move(work)));
    self->workBeside.push_back(running);
    std::stop_callback const passOn(context.stop, [running] { running.cancel(); });
    auto outcome = co_await outcomeOf(running.wait().withStop({}));
    std::erase(self->workBeside, running);
    try {
        outcome.take();
    } catch (Cancelled const &) {
        if (context.stop.stop_requested())
            throw;
        HostSessions::failAsShutDown();
    }
}

Task<void> SSHProvider::withClient(Self self, Task<void> work)
{
    auto const slot = co_await HostSlots::shared()->take(self->destination);
    co_await std::move(work);
}

Task<Survey> SSHProvider::survey(std::string folder, std::vector<std::string> names, Survey::Detail detail)
{
    return surveyBeside(shared_from_this(), std::move(folder), std::move(names), detail);
}

Task<Survey> SSHProvider::surveyBeside(Self self, std::string folder, std::vector<std::string> names,
                                       Survey::Detail detail)
{
    auto const result = std::make_shared<Survey>();
    co_await self->beside(surveyHere(self, std::move(folder), std::move(names), detail, result));
    co_return *result;
}

Task<void> SSHProvider::surveyHere(Self self, std::string folder, std::vector<std::string> names, Survey::Detail detail,
                                   std::shared_ptr<Survey> result)
{
    if (self->sessions->speaks() != ShellDialect::posix)
        throw FileOperationError::Unsupported("comparing on " + self->destination);
    auto const mark = "tw" + randomDigits(8);
    auto const reader = std::make_shared<SurveyReader>(mark, detail);
    auto client = SSHCommandLine::transferClient(self->sshProgram,
                                                 SSHCommandLine::script(self->sharingOptions(), self->destination));
    client.input = PipeEnd{};
    client.output = PipeEnd{};
    client.error = PipeEnd{};
    auto const ended = co_await OneShotCommand::run(
        self->engine.io(), std::move(client), keptBytes,
        [reader](std::string bytes) { return readSurvey(reader, std::move(bytes)); },
        surveyScript(mark, folder, names));
    if (!reader->isComplete()) {
        auto const words = lastWords(ended);
        throw FileOperationError::Failed("reading", folder, words.empty() ? "not all of it can be read" : words);
    }
    *result = reader->survey();
}

Task<void> SSHProvider::download(std::string path, std::string localPath)
{
    return beside(downloadHere(shared_from_this(), std::move(path), std::move(localPath)));
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
    auto const end = std::make_shared<DownloadEnd>(self->sessions->speaks());
    auto const result =
        co_await OneShotCommand::run(self->engine.io(), std::move(client), keptBytes,
                                     [end, writer = TransferFile::writer(self->engine, file, localPath)](
                                         std::string bytes) { return passOn(end, writer, std::move(bytes)); });
    if (!result.status.isSuccess() || !end->hasCome())
        throw ReadError::NotReadable(path, result.status.isSuccess() ? notRun : lastWords(result));
    co_await TransferFile::finish(self->engine, file, localPath);
}

Task<void> SSHProvider::upload(std::string localPath, std::string path)
{
    return beside(uploadHere(shared_from_this(), std::move(localPath), std::move(path)));
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
