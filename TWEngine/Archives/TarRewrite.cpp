#include "TWEngine/Archives/TarRewrite.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Runtime/WholeFile.h"
#include "TWEngine/Transfer/TarError.h"
#include "TWEngine/Transfer/TransferChild.h"

#include <fcntl.h>

namespace tw::TarRewrite {

namespace {

using ArchiveScripts::Script;

constexpr std::chrono::milliseconds noPatience{0};

constexpr std::size_t pieceBytes = std::size_t{256} * 1024;

/// By its first bytes: a name may say anything.
Task<bool> isCompressed(ArchiveWork::Shared work, std::string path)
{
    auto const is = co_await work->engine.files().run(
        path, FileLanes::LastLink::follow, WorkPriority::interactive, [path](auto const &) {
            FileDescriptor const file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
            std::string begin;
            return file && WholeFile::readUpTo(file.get(), 2, begin) == 0 && begin == "\x1F\x8B";
        });
    co_return is;
}

ChildCommand reader(std::string const &path, bool isCompressed)
{
    auto command = ArchiveChild::command(Script{isCompressed ? "exec gzip -dc\n" : "exec cat\n", {}});
    command.input = FileEnd{path, FileEnd::Use::read};
    command.output = PipeEnd{};
    return command;
}

ChildCommand writer(std::string const &path, bool isCompressed)
{
    auto command = ArchiveChild::command(Script{isCompressed ? "exec gzip -c\n" : "exec cat\n", {}});
    command.input = PipeEnd{};
    command.output = FileEnd{path, FileEnd::Use::replace};
    return command;
}

void throwIfFailed(ArchiveChild::Job const &job, ExitStatus status, TransferChild const &child)
{
    if (auto const words = ArchiveChild::complaint(status, child.words()))
        throw FileOperationError::Failed(job.operation, job.path, *words);
}

/// Passes a whole archive but its end.
Task<void> pump(ArchiveWork::Shared work, TransferChild::Shared from, TransferChild::Shared to,
                std::shared_ptr<TarFilter> filter, ArchiveChild::Job job)
{
    std::string buffer;
    buffer.reserve(pieceBytes);
    for (;;) {
        buffer = co_await from->process().read(ChildOutput::standard, std::move(buffer));
        if (buffer.empty())
            break;
        auto passed = filter->pass(buffer);
        if (!passed.empty())
            co_await to->process().write(std::move(passed));
        TransferProgress progress{.total = job.total, .item = job.item};
        if (job.total)
            progress.bytes = std::min(*job.total, ArchiveChild::bytesRead(from->process().processId(), job.reads));
        work->report(progress);
    }
    auto const status = co_await TransferChild::end(from);
    throwIfFailed(job, status, *from);
    if (!filter->isAtEnd())
        throw TarError("the archive ended too early");
}

struct Children {
    std::vector<TransferChild::Shared> all;
};

/// All programs are at their end afterwards.
Task<void> endAll(std::shared_ptr<Children> children)
{
    for (auto const &child : children->all)
        child->process().terminate();
    for (std::size_t index = 0; index < children->all.size(); ++index)
        co_await TransferChild::endSoon(children->all[index], noPatience);
}

Task<TransferChild::Shared> start(ArchiveWork::Shared work, std::shared_ptr<Children> children, ChildCommand command)
{
    auto const child = co_await TransferChild::start(work->engine, std::move(command));
    children->all.push_back(child);
    co_return child;
}

Task<void> finish(TransferChild::Shared writing, ArchiveChild::Job job)
{
    co_await writing->process().write(TarFilter::end());
    writing->process().closeInput();
    auto const status = co_await TransferChild::end(writing);
    throwIfFailed(job, status, *writing);
}

Task<void> writeWithout(ArchiveWork::Shared work, std::shared_ptr<Children> children, Files files,
                        std::vector<std::string> members, ArchiveChild::Job job)
{
    auto const compressed = co_await isCompressed(work, files.from);
    auto const reading = co_await start(work, children, reader(files.from, compressed));
    auto const writing = co_await start(work, children, writer(files.to, compressed));
    auto const filter = std::make_shared<TarFilter>(members, TarFilter::Covers::everythingBelow);
    co_await pump(work, reading, writing, filter, job);
    if (filter->kept() == 0)
        throw FileOperationError::Unsupported("that would empty the archive — delete the file instead");
    co_await finish(writing, job);
}

/// What is new comes first: its paths say what of the old archive goes.
Task<void> writeWith(ArchiveWork::Shared work, std::shared_ptr<Children> children, Files files, ChildCommand tar,
                     ArchiveChild::Job job)
{
    auto const compressed = co_await isCompressed(work, files.from);
    tar.output = PipeEnd{};
    auto const packing = co_await start(work, children, std::move(tar));
    auto const writing = co_await start(work, children, writer(files.to, compressed));
    auto const fresh = std::make_shared<TarFilter>(std::vector<std::string>(), TarFilter::Covers::themAlone);
    co_await pump(work, packing, writing, fresh, {.operation = job.operation, .path = job.path, .item = job.item});
    auto const reading = co_await start(work, children, reader(files.from, compressed));
    std::vector<std::string> const replaced(fresh->keptPaths().begin(), fresh->keptPaths().end());
    auto const old = std::make_shared<TarFilter>(replaced, TarFilter::Covers::themAlone);
    co_await pump(work, reading, writing, old, job);
    co_await finish(writing, job);
}

/// What the programs say explains more than that a pipe broke.
Task<void> carryOut(Task<void> writing, std::shared_ptr<Children> children, ArchiveChild::Job job)
{
    auto const outcome = co_await outcomeOf(std::move(writing));
    if (!outcome.failure)
        co_return;
    co_await endAll(children).withStop({});
    std::string words;
    try {
        std::rethrow_exception(outcome.failure);
    } catch (TarError const &refusal) {
        words = refusal.what();
    } catch (PipeError const &broken) {
        words = broken.what();
        for (auto const &child : children->all)
            words = child->words().empty() ? words : child->words();
    }
    throw FileOperationError::Failed(job.operation, job.path, words);
}

} // namespace

Task<void> without(ArchiveWork::Shared work, Files files, std::vector<std::string> members, ArchiveChild::Job job)
{
    auto const children = std::make_shared<Children>();
    return carryOut(writeWithout(std::move(work), children, std::move(files), std::move(members), job), children, job);
}

Task<void> with(ArchiveWork::Shared work, Files files, ChildCommand tar, ArchiveChild::Job job)
{
    auto const children = std::make_shared<Children>();
    return carryOut(writeWith(std::move(work), children, std::move(files), std::move(tar), job), children, job);
}

} // namespace tw::TarRewrite
