#include "TWEngine/Archives/ArchivePipe.h"

#include "TWCore/Archives/BsdTarThere.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Shell/ShellLiteral.h"
#include "TWEngine/Transfer/HostSlots.h"
#include "TWEngine/Transfer/PumpRest.h"
#include "TWEngine/Transfer/TransferChild.h"
#include "TWEngine/Transfer/TransferCommands.h"

#include <algorithm>

namespace tw::ArchivePipe {

namespace {

/// All that a pipe holds.
constexpr std::size_t pieceBytes = std::size_t{1024} * 1024;

constexpr std::chrono::milliseconds noPatience{0};

struct Running {
    ArchiveWork::Shared work;
    std::string label;
    std::optional<std::int64_t> total;
    TransferChild::Shared producer = {};
    TransferChild::Shared consumer = {};
    bool couldNotWrite = false;
};

using Run = std::shared_ptr<Running>;

/// In one order on all hosts, or two streams could each wait for what the other one has.
Task<std::vector<HostSlots::Slot>> takeSlots(End one, End other)
{
    std::vector<std::string> hosts;
    for (auto const *const end : {&one, &other}) {
        if (end->host)
            hosts.push_back(end->host->host());
    }
    std::ranges::sort(hosts);
    std::vector<HostSlots::Slot> slots;
    for (auto const &host : hosts) {
        auto slot = co_await HostSlots::shared()->take(host);
        slots.push_back(std::move(slot));
    }
    co_return slots;
}

Task<ChildCommand> commandOf(ArchiveWork::Shared work, End end)
{
    if (!end.host)
        co_return end.here;
    auto options = co_await end.host->transportOptions();
    co_return TransferCommands::overSSH(work->transfer, std::move(options), end.host->host(), end.there);
}

Task<void> pump(Run run)
{
    auto const clock = run->work->engine.clock();
    PumpRest rest;
    std::int64_t bytes = 0;
    for (;;) {
        std::size_t passed = 0;
        try {
            passed = co_await run->producer->process().moveOutput(run->consumer->process(), pieceBytes);
        } catch (PipeError const &) {
            run->couldNotWrite = true;
        }
        if (passed == 0)
            break;
        bytes += static_cast<std::int64_t>(passed);
        run->work->report({.bytes = bytes, .total = run->total, .item = run->label});
        auto const time = rest.after(passed, pieceBytes);
        if (time > PumpRest::Time(0))
            co_await clock->sleep(time);
    }
    run->consumer->process().closeInput();
}

Task<void> carry(Run run)
{
    co_await pump(run);
    if (run->couldNotWrite)
        run->producer->process().terminate();
    auto const produced = co_await TransferChild::end(run->producer);
    auto const consumed = co_await TransferChild::end(run->consumer);
    auto const reading = ArchiveChild::complaint(produced, run->producer->words());
    auto const writing = ArchiveChild::complaint(consumed, run->consumer->words());
    // A consumer that stops reading is the cause of what becomes of the producer; one that gets half an archive is not.
    if (reading && !run->couldNotWrite)
        throw FileOperationError::Failed("read", run->label, *reading);
    if (writing)
        throw FileOperationError::Failed("write", run->label, *writing);
    // A tar ends with the archive, and what is behind that in the file is of no use to it.
    if (reading && produced.cause == ExitStatus::Cause::exited)
        throw FileOperationError::Failed("read", run->label, *reading);
}

} // namespace

End endOf(ArchiveStaging::Machine const &machine, ArchiveCommands::Call const &call)
{
    End end{.host = machine.host};
    if (!end.host) {
        end.here = ArchiveChild::command(call);
        return end;
    }
    std::string const locale(BsdTarThere::isIt(machine.tools, call.program) ? BsdTarThere::locale() : "");
    auto const *const options = call.hasBackslash() ? "TAR_OPTIONS=--no-unquote " : "";
    end.there = "sh -c " + ShellLiteral::posix(locale + options + call.text(ShellDialect::posix));
    return end;
}

End endOf(std::shared_ptr<CommandHost> host, ArchiveScripts::Script const &script)
{
    End end{.host = std::move(host)};
    if (end.host)
        end.there = "sh -c " + ShellLiteral::posix(script.inSubshell());
    else
        end.here = ArchiveChild::command(script);
    return end;
}

Task<void> run(ArchiveWork::Shared work, End producer, End consumer, std::string label,
               std::optional<std::int64_t> total)
{
    auto const slots = co_await takeSlots(producer, consumer);
    auto const run = std::make_shared<Running>(Running{.work = work, .label = std::move(label), .total = total});
    auto from = co_await commandOf(work, std::move(producer));
    auto to = co_await commandOf(work, std::move(consumer));
    from.output = PipeEnd{};
    to.input = PipeEnd{};
    work->report({.total = total, .item = run->label});
    run->producer = co_await TransferChild::start(work->engine, std::move(from));
    run->consumer = co_await TransferChild::start(work->engine, std::move(to));
    auto const carried = co_await outcomeOf(carry(run));
    if (!carried.failure)
        co_return;
    co_await TransferChild::endSoon(run->producer, noPatience).withStop({});
    co_await TransferChild::endSoon(run->consumer, noPatience).withStop({});
    std::rethrow_exception(carried.failure);
}

} // namespace tw::ArchivePipe
