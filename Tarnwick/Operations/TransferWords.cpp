#include "Tarnwick/Operations/TransferWords.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/LowerCased.h"
#include "TWCore/Model/WindowsPath.h"
#include "Tarnwick/Operations/CountPhrase.h"
#include "Tarnwick/Panes/PaneStatus.h"

namespace tw::TransferWords {

namespace {

std::string pathOf(Operands const &where)
{
    return onOneLine(WindowsPath::display(where.path));
}

/// "\n\nComplete (2 items):\na\nb"; nothing without names.
void addList(std::vector<Text> &lines, List const &list)
{
    if (list.names.empty())
        return;
    if (!lines.empty())
        lines.emplace_back("\n\n");
    lines.push_back({list.heading, {countPhrase(list.names.size())}});
    lines.emplace_back("\n" + Dialogs::describe(list.names, mostNames));
}

void addLeftBehind(std::vector<Text> &lines, TransferEnd const &end)
{
    for (auto const &folder : end.leftBehind) {
        if (!lines.empty())
            lines.emplace_back("\n\n");
        lines.push_back(
            {"The folder %@ could not be deleted, or not yet. Nothing that was put into it here is needed any more.",
             {onOneLine(WindowsPath::display(folder))}});
    }
}

} // namespace

std::string place(Operands const &where)
{
    return withNothingHidden(where.connection) + ":" + pathOf(where);
}

std::string title(TransferKind kind, std::size_t count)
{
    return (kind == TransferKind::copy ? "Copy " : "Move ") + countPhrase(count);
}

Dialogs::Prompt question(TransferKind kind, Operands const &source, Operands const &target)
{
    return {.title = title(kind, source.names.size()),
            .message = Dialogs::describe(source.names, mostNames) + "\n\nfrom " + place(source) + "\nto " +
                       withNothingHidden(target.connection) + ":",
            .initial = WindowsPath::display(target.path),
            .okTitle = kind == TransferKind::copy ? "Copy" : "Move"};
}

Dialogs::Confirmation offerToCreate(Operands const &target)
{
    return {.title = "Create this folder?",
            .message = "There is no folder " + place(target) + " yet.",
            .okTitle = "Create"};
}

Dialogs::Conflicts conflicts(TransferKind kind, Operands const &target, std::vector<NameConflict> taken, Sheet sheet)
{
    auto const count = countPhrase(taken.size());
    std::string const before = sheet == Sheet::again ? "Files have changed there meanwhile. " : "";
    return {.title = kind == TransferKind::copy ? "Copy over what is there?" : "Move over what is there?",
            .message = before + count + (taken.size() == 1 ? " has a name" : " have names") + " that " + place(target) +
                       " has already.",
            .names = std::move(taken)};
}

Text cancelled(TransferJob const &job, TransferEnd const &end)
{
    auto const &summary = end.summary;
    auto const count = job.source.names.size();
    auto const what = lowerCased(title(job.kind, count));
    auto const gone = grouped(static_cast<std::int64_t>(end.gone.size()));
    auto const all = grouped(static_cast<std::int64_t>(count));
    auto const hasArrived = end.kept.changed.empty() && end.kept.unequal.empty();
    if (!end.isGoneKnown)
        return {hasArrived ? "%@ cancelled: everything has arrived, it is not known what was removed from the source"
                           : "%@ cancelled: it is not known what was removed from the source",
                {what}};
    if (end.isSourceTouched) {
        Text removed(hasArrived ? "%@ cancelled: everything has arrived, %@ of %@ items removed from the source"
                                : "%@ cancelled: %@ of %@ items removed from the source",
                     {what, gone, all});
        return end.mayBePartlyGone ? Text::sequence({std::move(removed), ", one more perhaps in part"})
                                   : std::move(removed);
    }
    if (!end.gone.empty())
        return {"%@ cancelled: %@ of %@ items moved", {what, gone, all}};
    if (!summary.areFilesKnown)
        return {"%@ cancelled: it is not known how many files were copied", {what}};
    auto const files = grouped(summary.files);
    if (!summary.totalFiles)
        return {"%@ cancelled: %@ files copied", {what, files}};
    return {"%@ cancelled: %@ of %@ files copied", {what, files, grouped(*summary.totalFiles)}};
}

Text failed(std::exception_ptr const &failure, std::vector<List> const &lists)
{
    std::vector<Text> lines{PaneStatus::describe(failure)};
    for (auto const &list : lists)
        addList(lines, list);
    return Text::sequence(std::move(lines));
}

Text failed(TransferEnd const &end)
{
    std::vector<Text> lines{failed(end.failure, {{"Complete (%@):", end.summary.complete},
                                                 {"Perhaps there in part (%@):", end.summary.partial},
                                                 {"Untouched (%@):", end.summary.untouched}})};
    addLeftBehind(lines, end);
    return Text::sequence(std::move(lines));
}

Text kept(TransferEnd const &end)
{
    if (!end.sourceFailure && end.kept.changed.empty() && end.kept.unequal.empty())
        return leftBehind(end);
    std::vector<Text> lines{"Everything was copied, but not everything was deleted where it came from."};
    if (end.sourceFailure) {
        lines.emplace_back("\n\n");
        lines.push_back(PaneStatus::describe(end.sourceFailure));
    }
    addList(lines, {"Changed there during the copy, so the target may have an older state (%@):", end.kept.changed});
    addList(lines, {"Not the same at the target (%@):", end.kept.unequal});
    addLeftBehind(lines, end);
    return Text::sequence(std::move(lines));
}

Text leftByCancel(TransferJob const &job, TransferEnd const &end)
{
    std::vector<std::string> merging;
    for (auto const &each : job.plan.only(end.summary.partial).replace) {
        if (each.comparison() == NameConflict::Comparison::folders)
            merging.push_back(each.source.name);
    }
    std::vector<Text> lines;
    if (auto said = kept(end); !said.isEmpty())
        lines.push_back(std::move(said));
    addList(lines, {"Merged in part, and one file there may be neither the old nor the new one (%@):", merging});
    return Text::sequence(std::move(lines));
}

Text leftBehind(TransferEnd const &end)
{
    std::vector<Text> lines;
    addLeftBehind(lines, end);
    return Text::sequence(std::move(lines));
}

Text done(TransferJob const &job)
{
    auto const count = countPhrase(job.plan.allNames().size());
    if (job.kind == TransferKind::copy)
        return {"Copied %@ to %@.", {count, place(job.target)}};
    return {"Moved %@ to %@.", {count, place(job.target)}};
}

} // namespace tw::TransferWords
