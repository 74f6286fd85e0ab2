#include "Tarnwick/Operations/Delete.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/LowerCased.h"
#include "TWCore/Model/WindowsPath.h"
#include "TWEngine/Transfer/HostWork.h"
#include "Tarnwick/Operations/AnswerUntil.h"
#include "Tarnwick/Operations/ArchiveChanges.h"
#include "Tarnwick/Operations/ClaimSteps.h"
#include "Tarnwick/Operations/CountPhrase.h"
#include "Tarnwick/Operations/NamesWithout.h"
#include "Tarnwick/Operations/RequestSize.h"
#include "Tarnwick/Operations/TransferWords.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <stop_token>

namespace tw {

namespace {

std::string listOf(Operands const &what)
{
    return onOneLine(WindowsPath::display(what.path)) + ":\n" + Dialogs::describe(what.names, TransferWords::mostNames);
}

Dialogs::Confirmation questionAbout(Operands const &what, bool isReversible)
{
    auto const count = countPhrase(what.names.size());
    if (isReversible)
        return {.title = "Move " + count + " to the Trash?", .message = listOf(what), .okTitle = "Move to Trash"};
    return {.title = "Delete " + count + " on " + withNothingHidden(what.connection) + "?",
            .message =
                "There is no Trash on a remote host. This deletes permanently and cannot be undone.\n\n" + listOf(what),
            .okTitle = "Delete Permanently",
            .danger = Dialogs::Danger::destructive};
}

/// What is asked when the Trash has refused something: these are all that are still there.
Dialogs::Confirmation questionWithoutTrash(Operands const &left, FileOperationError::NoTrash const &why)
{
    return {.title = "Delete " + countPhrase(left.names.size()) + " permanently?",
            .message = "The Trash does not take " + onOneLine(why.path) + ": " + onOneLine(why.detail) +
                       "\n\nThis deletes permanently and cannot be undone.\n\n" + listOf(left),
            .okTitle = "Delete Permanently",
            .danger = Dialogs::Danger::destructive};
}

using Names = std::vector<std::string>;

/// What a deletion has left.
struct Left {
    Operands what;        ///< the names that are still there; all of them if the place does not answer
    Names folders = {};   ///< of these
    bool isKnown = false; ///< the place has answered
};

Task<Left> leftOf(Operands what)
{
    auto asking = what.browser->factsAbout(what.path, what.names);
    auto const facts =
        co_await outcomeOf(answerInTime(what.browser->clockRef(), patienceWithAnswer, std::move(asking)));
    if (!facts.value)
        co_return Left{.what = std::move(what)};
    what.names.clear();
    Left left{.what = std::move(what), .isKnown = true};
    for (auto const &each : facts.value->taken) {
        left.what.names.push_back(each.name);
        if (each.kind == EntryKind::directory)
            left.folders.push_back(each.name);
    }
    co_return left;
}

enum class How { asThePlaceDoes, permanently };

/// Some names under deletion, as the user sees it and can cancel it.
struct Deletion {
    OperationContext context;
    Operands what;
    How how = How::asThePlaceDoes;
    bool isToTrash = false;
    std::size_t done = 0;            ///< of the names, from the first one on
    std::size_t begun = 0;           ///< of the names, those of a request under way too
    std::stop_source cancelled = {}; ///< by the user

    std::string title() const
    {
        return (isToTrash ? "Move " : "Delete ") + countPhrase(what.names.size()) + (isToTrash ? " to the Trash" : "");
    }

    ProgressState state() const
    {
        return {.item = what.names[done],
                .files = static_cast<std::int64_t>(done),
                .totalFiles = static_cast<std::int64_t>(what.names.size()),
                .unit = ProgressState::Unit::items};
    }

    Task<void> request(std::vector<std::string> paths) const
    {
        return how == How::permanently ? what.browser->removePermanently(std::move(paths))
                                       : what.browser->remove(std::move(paths));
    }

    Text cancelledWords(std::size_t gone) const
    {
        auto const all = grouped(static_cast<std::int64_t>(what.names.size()));
        return {isToTrash ? "%@ cancelled: %@ of %@ items moved" : "%@ cancelled: %@ of %@ items deleted",
                {lowerCased(title()), grouped(static_cast<std::int64_t>(gone)), all}};
    }
};

using Work = std::shared_ptr<Deletion>;

/// Deletes in requests of a moment each: between them the user sees how far it is.
Task<void> removeInRequests(Work work, std::shared_ptr<Progress> shown)
{
    auto const claim =
        co_await ClaimSteps::claim(work->context.claims, "delete", work->what, ClaimedNames::Use::deleted);
    auto const paths = work->what.paths();
    // A host deletes thousands of names in the time of a round trip, and each request costs one.
    auto const isOnHost = !work->what.browser->writer()->deleteIsReversible();
    RequestSize size(isOnHost ? RequestSize::most : RequestSize::first);
    while (work->done < paths.size()) {
        if (work->cancelled.stop_requested())
            throw FileOperationError::Cancelled();
        shown->update(work->state());
        auto const first = paths.begin() + static_cast<std::ptrdiff_t>(work->done);
        auto const count = std::min(size.items(), paths.size() - work->done);
        work->begun = work->done + count;
        auto const begin = std::chrono::steady_clock::now();
        co_await work->request({first, first + static_cast<std::ptrdiff_t>(count)});
        size.took(std::chrono::steady_clock::now() - begin);
        work->done += count;
    }
}

/// How a deletion has ended.
struct DeletionEnd {
    Left left;
    std::exception_ptr failure;

    Names const &names() const noexcept { return left.what.names; }
};

/// What of the names that are left may be deleted in part: a folder of the request that failed. On this machine the
/// failure names it and nothing behind it was begun; the rm of a host goes on with the next. The Trash takes all of a
/// folder or nothing.
Names partsOf(Deletion const &work, DeletionEnd const &end)
{
    auto const &what = work.what;
    auto const isHost = what.browser->host() != nullptr;
    auto const failed = failureAs<FileOperationError::Failed>(end.failure);
    Names const begun(what.names.begin(), what.names.begin() + static_cast<std::ptrdiff_t>(work.begun));
    auto const unbegun = namesWithout(what.names, begun);
    auto parts = namesWithout(end.left.isKnown ? end.left.folders : end.names(), unbegun);
    std::erase_if(parts, [&](auto const &name) {
        auto const path = what.pathOf(name);
        auto const isNamed = failed && (failed->path == path || failed->path.starts_with(path + "/"));
        return end.left.isKnown && (work.isToTrash || (!isHost && !isNamed));
    });
    return parts;
}

/// Why it failed, and what has come of the names, if a request was sent.
Text failureOf(Deletion const &work, DeletionEnd const &end)
{
    if (work.begun == 0)
        return TransferWords::failed(end.failure, {});
    auto const parts = partsOf(work, end);
    return TransferWords::failed(
        end.failure,
        {{work.isToTrash ? "In the Trash (%@):" : "Deleted (%@):", namesWithout(work.what.names, end.names())},
         {end.left.isKnown ? "Perhaps deleted in part (%@):" : "Perhaps deleted (%@):", parts},
         {"Untouched (%@):", namesWithout(end.names(), parts)}});
}

/// What a program has said, if that is several lines.
std::string wordsOf(DeletionEnd const &end)
{
    auto const failed = failureAs<FileOperationError::Failed>(end.failure);
    return failed && failed->detail.contains('\n') ? failed->detail : std::string();
}

bool isCancelled(Work const &work, DeletionEnd const &end)
{
    return end.failure && work->cancelled.stop_requested();
}

/// In one sentence.
Text conclusionOf(Work const &work, DeletionEnd const &end)
{
    auto const count = work->what.names.size();
    if (isCancelled(work, end) && failureIs<HostWork::MayGoOn>(end.failure))
        return {"%@ cancelled: the host may go on, so it is not known what is deleted", {lowerCased(work->title())}};
    if (isCancelled(work, end) && !end.left.isKnown)
        return {work->isToTrash ? "%@ cancelled: it is not known what was moved"
                                : "%@ cancelled: it is not known what is deleted",
                {lowerCased(work->title())}};
    if (isCancelled(work, end))
        return work->cancelledWords(count - end.names().size());
    if (end.failure)
        return PaneStatus::describe(end.failure);
    return {work->isToTrash ? "Moved %@ to the Trash." : "Deleted %@.", {countPhrase(count)}};
}

/// Does not throw, unless the window goes: Cancelled.
Task<DeletionEnd> perform(Work work)
{
    auto const here = co_await currentContext();
    std::stop_callback const passOn(here.stop, [work] { work->cancelled.request_stop(); });
    auto const spinning = work->context.beginWork();
    std::shared_ptr<Progress> const shown = work->context.dialogs->progress(
        work->title() + "…", [source = work->cancelled]() mutable { source.request_stop(); });
    auto const outcome = co_await outcomeOf(removeInRequests(work, shown).withStop(work->cancelled.get_token()));
    if (here.stop.stop_requested())
        throw Cancelled();
    DeletionEnd end{.left = {.what = work->what}, .failure = outcome.failure};
    auto &names = end.left.what.names;
    names.erase(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(work->done));
    if (end.failure) {
        auto left = co_await leftOf(end.left.what);
        end.left = std::move(left);
    }
    shown->conclude(conclusionOf(work, end).english());
    co_return end;
}

void rereadPanes(Work const &work, DeletionEnd const &end, std::string const &survivor)
{
    auto const &what = work->what;
    auto const gone = namesWithout(what.names, end.names());
    work->context.rereadWithout(what, gone, end.names().empty() ? survivor : std::string());
}

Task<void> tell(Work work, DeletionEnd end)
{
    if (isCancelled(work, end))
        work->context.warn(conclusionOf(work, end));
    else if (end.failure)
        co_await work->context.dialogs->error(failureOf(*work, end), wordsOf(end));
}

/// Deletes. What the Trash refuses is deleted permanently, if the user wants that.
Task<void> removeAll(OperationContext context, bool isToTrash)
{
    auto const survivor = context.nameSurviving();
    auto const work =
        std::make_shared<Deletion>(Deletion{.context = context, .what = context.operands, .isToTrash = isToTrash});
    auto end = co_await perform(work);
    rereadPanes(work, end, survivor);
    auto const refusal = failureAs<FileOperationError::NoTrash>(end.failure);
    if (!refusal || end.names().empty()) {
        co_await tell(work, end);
        co_return;
    }
    auto const answer = co_await context.dialogs->confirm(questionWithoutTrash(end.left.what, *refusal));
    if (answer == Dialogs::Answer::cancel)
        co_return;
    auto const second =
        std::make_shared<Deletion>(Deletion{.context = context, .what = end.left.what, .how = How::permanently});
    end = co_await perform(second);
    rereadPanes(second, end, survivor);
    co_await tell(second, end);
}

} // namespace

Task<void> deleteOperands(OperationContext context)
{
    auto const what = context.operands;
    if (what.names.empty()) {
        context.refuse();
        co_return;
    }
    if (what.archive) {
        co_await deleteFromArchive(context);
        co_return;
    }
    auto const writer = what.browser->writer();
    if (!writer) {
        context.warn({"%@ is read-only", {what.connection}});
        co_return;
    }
    auto const answer = co_await context.dialogs->confirm(questionAbout(what, writer->deleteIsReversible()));
    if (answer == Dialogs::Answer::cancel)
        co_return;
    co_await removeAll(context, writer->deleteIsReversible());
}

} // namespace tw
