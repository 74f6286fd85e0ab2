#include "Tarnwick/Operations/Pack.h"

#include "TWCore/Archives/ArchiveStem.h"
#include "TWCore/Archives/ReadableArchive.h"
#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/WindowsPath.h"
#include "Tarnwick/Format/Fmt.h"
#include "Tarnwick/Operations/Agreement.h"
#include "Tarnwick/Operations/AnswerOrCancel.h"
#include "Tarnwick/Operations/ArchiveSteps.h"
#include "Tarnwick/Operations/CountPhrase.h"
#include "Tarnwick/Operations/TargetFolder.h"
#include "Tarnwick/Operations/TransferWords.h"

namespace tw {

namespace {

/// More names do not help to decide.
constexpr std::size_t mostNames = 6;

std::string stemFor(Operands const &source)
{
    if (source.names.size() == 1)
        return std::string(Fmt::splitExtension(source.names.front(), Fmt::IsDirectory::no).base);
    auto const folder = source.path.substr(source.path.rfind('/') + 1);
    return folder.empty() ? "archive" : folder;
}

Dialogs::PackPrompt questionFor(OperationContext const &context, std::vector<ArchiveFormat> formats)
{
    auto const &source = context.operands;
    return {.title = "Pack " + countPhrase(source.names.size()),
            .message = TransferWords::place(source) + "\n" + Dialogs::describe(source.names, mostNames),
            .directory = WindowsPath::display(context.target.path),
            .stem = onOneLine(stemFor(source)),
            .formats = std::move(formats)};
}

Dialogs::Confirmation offerToReplace(Operands const &target, std::string const &name)
{
    return {.title = "Replace " + onOneLine(name) + "?",
            .message = TransferWords::place(target) + " has a file of this name. Its content would be lost.",
            .okTitle = "Replace",
            .danger = Dialogs::Danger::destructive};
}

/// A warning on the status line, if one of the two places has no files of its own.
bool warnsOfPlaces(OperationContext const &context)
{
    if (!context.operands.browser->writer()) {
        context.warn({"%@ is read-only", {context.operands.connection}});
        return true;
    }
    if (!context.target.browser->writer()) {
        context.warn({"%@ is read-only", {context.target.connection}});
        return true;
    }
    return false;
}

Task<void> packInto(OperationContext context, PackTarget chosen)
{
    auto const end = chosen.path.rfind('/');
    auto const name = chosen.path.substr(end + 1);
    auto const what = "Pack " + countPhrase(context.operands.names.size());
    auto target = context.target;
    if (end != std::string::npos) {
        auto finding = targetFolder(context, chosen.path.substr(0, std::max<std::size_t>(end, 1)));
        target = co_await answerOrCancel(context, what, std::move(finding));
    }
    auto const from = ArchiveSteps::endpointOf(context.operands, context.operands.path);
    auto const archive = ArchiveSteps::endpointOf(target, target.pathOf(name));
    if (!from || !archive) {
        context.warn({"%@ is read-only", {target.connection}});
        co_return;
    }
    target.names = {name};
    auto const writing = ClaimSteps::into(what, "pack", target);
    auto agreed = co_await Agreement::reach(context, writing, [context, target](auto taken, auto /*sheet*/) {
        return ArchiveSteps::replaceAll(context, std::move(taken),
                                        [target](auto const &names) { return offerToReplace(target, names.front()); });
    });
    if (!agreed)
        co_return;
    auto const isDone = co_await ArchiveSteps::perform(
        context, {.title = what,
                  .conclusion = what + ": done.",
                  .claim = std::move(agreed->checked.claim),
                  .begin = [names = context.operands.names, from = *from, archive = *archive,
                            format = chosen.format](Archives &archives, Archives::Reporter onProgress) {
                      return archives.pack(names, from, archive, format, std::move(onProgress));
                  }});
    if (isDone)
        context.unmarkOperands();
    co_await ArchiveSteps::showArrival(context, target, name);
}

Task<void> packAsked(OperationContext context)
{
    auto const from = ArchiveSteps::endpointOf(context.operands, context.operands.path);
    auto const to = ArchiveSteps::endpointOf(context.target, context.target.path);
    auto work = context.beginWork(context.target.browser);
    auto formats = co_await context.makeArchives()->formats(*from, *to);
    work.reset();
    auto const chosen = co_await context.dialogs->packPrompt(questionFor(context, std::move(formats)));
    if (chosen)
        co_await packInto(context, *chosen);
}

Dialogs::Confirmation questionAbout(std::string const &name, Operands const &target, std::string const &folder)
{
    auto into = target;
    into.path = target.pathOf(folder);
    auto const stem = archiveStem(name);
    return {.title = "Unpack " + onOneLine(name) + "?",
            .message = "Its contents go into " + TransferWords::place(into) + "." +
                       (folder == stem ? "" : "\n\n" + onOneLine(stem) + " is there already."),
            .okTitle = "Unpack"};
}

std::string unpackingOf(std::string const &name)
{
    return "Unpack " + onOneLine(name);
}

/// A name for the new folder that is free.
Task<ClaimSteps::Named> freeFolder(OperationContext context, std::string name, Operands wanted)
{
    auto const work = context.beginWork(wanted.browser);
    auto const writing = ClaimSteps::into(unpackingOf(name), "unpack", wanted);
    auto checked = co_await ClaimSteps::check(context, writing);
    auto const taken = TakenNames::conflicts(wanted.names, checked.facts);
    auto plan = TransferPlan::of(wanted.names, taken, std::vector(taken.size(), NameConflict::Answer::keepBoth));
    auto named = co_await ClaimSteps::withFreeNames(context, std::move(plan), writing, std::move(checked));
    co_return named;
}

/// The name that the user agrees to; nothing if the user calls it off.
Task<std::optional<ClaimSteps::Named>> agreedFolder(OperationContext context, std::string name)
{
    auto wanted = context.target;
    wanted.names = {archiveStem(name)};
    for (std::string shown;;) {
        auto named = co_await freeFolder(context, name, wanted);
        auto const folder = named.plan.writtenNames().front();
        if (folder == shown)
            co_return named;
        named.claim.reset(); // a sheet that stands holds nobody else up
        auto const answer = co_await context.dialogs->confirm(questionAbout(name, wanted, folder));
        if (answer == Dialogs::Answer::cancel)
            co_return std::nullopt;
        shown = folder;
    }
}

Task<void> unpackAsked(OperationContext context, std::string name)
{
    auto agreed = co_await agreedFolder(context, name);
    if (!agreed)
        co_return;
    auto const folder = agreed->plan.writtenNames().front();
    auto const archive = ArchiveSteps::endpointOf(context.operands, context.operands.pathOf(name));
    auto const target = ArchiveSteps::endpointOf(context.target, context.target.pathOf(folder));
    auto const what = unpackingOf(name);
    co_await ArchiveSteps::perform(
        context, {.title = what,
                  .conclusion = what + ": done.",
                  .claim = std::move(agreed->claim),
                  .begin = [archive = *archive, target = *target](Archives &archives, Archives::Reporter onProgress) {
                      return archives.unpack(archive, target, std::move(onProgress));
                  }});
    co_await ArchiveSteps::showArrival(context, context.target, folder);
}

Task<void> showingFailure(OperationContext context, Task<void> work)
{
    auto const outcome = co_await outcomeOf(std::move(work));
    if (outcome.failure)
        co_await context.showFailure(outcome.failure);
}

} // namespace

Task<void> packOperands(OperationContext context)
{
    if (context.operands.names.empty()) {
        context.refuse();
        co_return;
    }
    if (!warnsOfPlaces(context))
        co_await showingFailure(context, packAsked(context));
}

Task<void> unpackArchive(OperationContext context)
{
    auto const pane = context.pane.lock();
    std::string const name(pane ? pane->cursorName() : std::string_view());
    if (name.empty()) {
        context.refuse();
        co_return;
    }
    if (!readableArchive(name)) {
        context.warn({"%@ is not an archive this can open", {name}});
        co_return;
    }
    if (!warnsOfPlaces(context))
        co_await showingFailure(context, unpackAsked(context, name));
}

} // namespace tw
