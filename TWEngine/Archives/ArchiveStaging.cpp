#include "TWEngine/Archives/ArchiveStaging.h"

#include "TWCore/Archives/ArchiveFailure.h"
#include "TWCore/Archives/BsdTarThere.h"
#include "TWCore/Async/ChildTask.h"
#include "TWCore/Check.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/Trimmed.h"
#include "TWCore/Shell/EndableCommand.h"
#include "TWEngine/Archives/LocalPlacing.h"
#include "TWEngine/Archives/PasswordedWork.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Transfer/HostWork.h"
#include "TWEngine/Transfer/TransferCommands.h"

#include <algorithm>

namespace tw::ArchiveStaging {

namespace {

using ArchiveScripts::Script;

constexpr std::string_view prefix = ".tw-archive-";

void throwIfFailed(CommandResult const &result, ArchiveChild::Job const &job)
{
    if (result.status == 0)
        return;
    auto const words = trimmed(result.output);
    std::rethrow_exception(ArchiveFailure::of(
        job.operation, job.path, words.empty() ? "exit " + std::to_string(result.status) : std::string(words)));
}

std::string targetOf(ArchivePlacing::Any const &placing)
{
    return std::visit([](auto const &one) { return one.target; }, placing);
}

/// Members under another name than that of the archive are the only failure that another attempt mends.
bool isNotFound(std::exception_ptr const &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (FileOperationError::Failed const &failed) {
        return failed.detail.contains("ot found in archive");
    } catch (...) {
        return false;
    }
}

Task<void> runScript(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host, Script script, ArchiveChild::Job job)
{
    if (!host) {
        co_await ArchiveChild::run(work, ArchiveChild::command(script), std::move(job));
        co_return;
    }
    auto const result = co_await host->runCommand(
        {.text = script.inSubshell(), .session = CommandSession::work, .effect = CommandEffect::changes});
    throwIfFailed(result, job);
}

Task<void> fill(ArchiveWork::Shared work, Steps steps)
{
    co_await makeFolder(work, nullptr, steps.staging, steps.job);
    for (std::size_t attempt = 0; attempt < steps.attempts.size(); ++attempt) {
        auto running = ArchiveChild::run(work, steps.attempts[attempt], steps.job);
        auto const outcome = co_await outcomeOf(std::move(running));
        if (!outcome.failure)
            break;
        if (attempt + 1 == steps.attempts.size() || !isNotFound(outcome.failure))
            std::rethrow_exception(outcome.failure);
    }
    if (steps.place)
        co_await place(work, nullptr, *steps.place, steps.job);
}

Task<void> runHere(ArchiveWork::Shared work, Steps steps)
{
    auto const filled = co_await outcomeOf(fill(work, steps));
    if (!filled.failure)
        co_return;
    co_await discard(work, nullptr, steps.staging);
    std::rethrow_exception(filled.failure);
}

Task<void> removing(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host, std::string staging)
{
    auto script = ArchiveScripts::removeStaging(std::move(staging));
    co_await outcomeOf(runScript(work, host, std::move(script), {.operation = "remove", .path = {}}));
}

enum class Asked { nothing, password };

std::string bsdTarText(std::string_view call, std::string_view token, Asked asked)
{
    return asked == Asked::nothing ? BsdTarThere::withoutPassword(call)
                                   : BsdTarThere::withPassword(call, EndableCommand::end(token));
}

/// The command by which a host performs the steps, with each call of a tool as one that can be ended.
std::string text(Machine const &machine, Steps const &steps, std::string_view token, Asked asked)
{
    auto const isBsdTar = BsdTarThere::isIt(machine.tools, steps.attempts.front().program);
    std::string script(isBsdTar ? BsdTarThere::locale() : "");
    script += ArchiveScripts::makeStaging(steps.staging).inSubshell() + " || exit 1\n";
    if (std::ranges::any_of(steps.attempts, &ArchiveCommands::Call::hasBackslash))
        script += "TAR_OPTIONS=--no-unquote; export TAR_OPTIONS\n";
    script += "{ ";
    for (auto const &attempt : steps.attempts) {
        auto const call = attempt.text(ShellDialect::posix);
        script += &attempt == steps.attempts.data() ? "(" : " || (";
        script += (isBsdTar ? bsdTarText(call, token, asked) : call) + ")";
    }
    script += "; }";
    if (steps.place)
        script += " && " + ArchiveScripts::place(*steps.place).inSubshell();
    script += "\ns=$?\n[ $s = 0 ] || " + ArchiveScripts::removeStaging(steps.staging).inSubshell() + "\nexit $s";
    return EndableCommand::text(token, {steps.attempts.front().program}, script);
}

Task<void> runThere(ArchiveWork::Shared work, Machine machine, Steps steps)
{
    auto const token = randomDigits(16);
    auto const script = text(machine, steps, token, work->password ? Asked::password : Asked::nothing);
    auto running = work->password ? PasswordedWork::run(work->engine, work->transfer.ssh, machine.host,
                                                        {script, token, *work->password})
                                  : HostWork::run(work->engine, machine.host, token, script);
    auto const result = co_await std::move(running);
    throwIfFailed(result, steps.job);
}

} // namespace

Task<Machine> machineOf(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host)
{
    if (!host)
        co_return Machine{nullptr, work->here};
    auto const dialect = co_await host->dialect();
    if (dialect == ShellDialect::powershell)
        throw FileOperationError::Unsupported("archives on a Windows host");
    auto const capability = co_await host->archiveCapability();
    co_return Machine{host, ArchiveCommands::toolsOf(capability)};
}

std::string newPath(std::string_view folder)
{
    return TransferCommands::pathOf(folder, std::string(prefix) + randomDigits(8));
}

Task<void> run(ArchiveWork::Shared work, Machine machine, Steps steps)
{
    work->report({.total = steps.job.total, .item = steps.job.item});
    return machine.host ? runThere(std::move(work), std::move(machine), std::move(steps))
                        : runHere(std::move(work), std::move(steps));
}

Task<void> makeFolder(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host, std::string staging,
                      ArchiveChild::Job job)
{
    if (host)
        co_await runScript(work, host, ArchiveScripts::makeStaging(staging), job);
    else
        co_await work->engine.files().run(staging, FileLanes::LastLink::keep, WorkPriority::interactive,
                                          [staging, job](auto const &) { LocalPlacing::makeStaging(staging, job); });
}

Task<void> place(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host, ArchivePlacing::Any placing,
                 ArchiveChild::Job job)
{
    auto left = std::optional(placing);
    auto const context = co_await currentContext();
    if (!host)
        left = co_await work->engine.files().run(
            targetOf(placing), FileLanes::LastLink::keep, WorkPriority::interactive,
            [placing, job, stop = context.stop](auto const &) { return LocalPlacing::place(placing, job, stop); });
    if (left)
        co_await runScript(work, host, ArchiveScripts::place(*left), job);
}

Task<void> discard(ArchiveWork::Shared work, std::shared_ptr<CommandHost> host, std::string staging)
{
    check(staging.substr(staging.rfind('/') + 1).starts_with(prefix), "only staging folders are discarded");
    auto const context = co_await currentContext();
    if (context.stop.stop_requested())
        spawn({context.executor, {}}, removing(work, host, std::move(staging)));
    else
        co_await removing(work, host, std::move(staging));
}

} // namespace tw::ArchiveStaging
