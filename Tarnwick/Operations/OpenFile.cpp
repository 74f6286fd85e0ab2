#include "Tarnwick/Operations/OpenFile.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWEngine/Applications/ApplicationError.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Format/Fmt.h"
#include "Tarnwick/Operations/ProgramQuestion.h"
#include "Tarnwick/Panes/PaneStatus.h"

#include <algorithm>

namespace tw {

namespace {

bool isOfThisMachine(OperationContext const &context)
{
    return context.operands.connection == localConnection;
}

void showFailure(OperationContext const &context, std::string const &name, std::exception_ptr const &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (Cancelled const &) {
        context.say("");
    } catch (ApplicationError::NothingOpens const &) {
        context.warn({"nothing on this Mac opens %@", {name}});
    } catch (...) {
        context.warn({"%@: %@", {name, PaneStatus::describe(failure)}});
    }
}

RemoteFiles::Source sourceOf(OperationContext const &context, FileToOpen const &file)
{
    auto const isLink = file.kind == EntryKind::symlink;
    return {.provider = context.operands.browser->providerRef(),
            .connection = context.operands.connection,
            .path = file.path,
            .size = isLink ? std::nullopt : std::optional(file.size),
            .mtime = file.mtime};
}

/// Of a link, the host knows how large its target is.
Task<std::int64_t> sizeOf(RemoteFiles::Source source)
{
    if (source.size)
        co_return *source.size;
    auto const reader = std::dynamic_pointer_cast<FileSystemReader>(source.provider);
    if (!reader)
        throw RemoteFiles::NoReader(source.connection);
    auto const size = co_await reader->fileSize(source.path);
    co_return size;
}

/// A copy of a file that lies elsewhere.
Task<std::string> copyOf(OperationContext context, FileToOpen file)
{
    auto const source = sourceOf(context, file);
    auto const &copies = context.opening.copies;
    auto ready = co_await copies->known(source);
    if (ready)
        co_return *std::move(ready);
    auto const stop = std::make_shared<std::stop_source>();
    auto work = context.beginWork();
    context.say({"fetching %@…", {file.name()}});
    auto const wanted = co_await mayFetch(context, file, Purpose::opening);
    if (!wanted)
        throw Cancelled();
    auto const shown =
        context.dialogs->progress("Fetching " + onOneLine(file.name()) + "…", [stop] { stop->request_stop(); });
    auto path = co_await copies->localCopy(source).withStop(stop->get_token());
    context.say(""); // a question may follow, or a failure to open it
    co_return path;
}

Task<void> askForApplication(OperationContext context, FileToOpen file)
{
    Dialogs::ApplicationChoice question{.file = file.name()};
    question.suggested = co_await applicationsFor(context.opening, context.operands.connection, file);
    auto all = co_await context.opening.applications->all();
    std::erase_if(all, [&](Application const &each) {
        auto const &suggested = question.suggested;
        return std::ranges::find(suggested, each.identifier, &Application::identifier) != suggested.end();
    });
    question.others = std::move(all);
    auto const chosen = co_await context.dialogs->chooseApplication(std::move(question));
    if (chosen)
        co_await openWithSystem(context, file, *chosen);
}

/// Answers for a file that would be executed. True if that is all. `path` is where it lies on this machine; it is not
/// needed for what cannot be run.
Task<bool> isAnsweredByQuestion(OperationContext context, FileToOpen file, std::string path, FileNature nature)
{
    auto const host = isOfThisMachine(context) ? std::string() : context.operands.connection;
    auto const question = ProgramQuestion::before(nature, file.name(), {.host = host});
    if (!question)
        co_return false;
    auto const taken = co_await context.dialogs->choose(question->choice);
    if (!taken)
        co_return true;
    switch (question->ways.at(*taken)) {
    case ProgramQuestion::Way::view:
        context.view(context.operands, file);
        break;
    case ProgramQuestion::Way::openWith:
        co_await askForApplication(context, file);
        break;
    case ProgramQuestion::Way::run:
        co_await context.opening.applications->run(path, nature.kind, context.opening.tokenNow());
        break;
    }
    co_return true;
}

/// The same for a file that takes long to fetch: its beginning says what it is, and a program need not be fetched to
/// be viewed.
Task<bool> isAnsweredByBeginning(OperationContext context, FileToOpen file)
{
    auto const source = sourceOf(context, file);
    auto const reader = std::dynamic_pointer_cast<FileSystemReader>(source.provider);
    if (!reader || !source.size || *source.size <= RemoteFiles::mostOfSmall)
        co_return false;
    auto const ready = co_await context.opening.copies->known(source);
    if (ready)
        co_return false;
    auto work = context.beginWork();
    auto beginning = co_await reader->readChunk(file.path, 0, beginningOfFile);
    auto const nature =
        co_await context.opening.applications->natureOfBeginning(file.name(), std::move(beginning), file.mode);
    work.reset();
    auto const isAnswered = co_await isAnsweredByQuestion(context, file, {}, nature);
    co_return isAnswered;
}

Task<void> open(OperationContext context, FileToOpen file, std::string application)
{
    if (file.kind != EntryKind::file && file.kind != EntryKind::symlink)
        throw ApplicationError::NothingOpens(file.path);
    auto path = file.path;
    if (!isOfThisMachine(context)) {
        if (application.empty()) {
            auto const isAnswered = co_await isAnsweredByBeginning(context, file);
            if (isAnswered)
                co_return;
        }
        path = co_await copyOf(context, file);
    }
    auto const &applications = context.opening.applications;
    auto const modeThere = isOfThisMachine(context) ? std::uint16_t(0) : file.mode;
    auto nature = co_await applications->natureOf(path, modeThere);
    if (application.empty()) {
        auto const isAnswered = co_await isAnsweredByQuestion(context, file, path, nature);
        if (isAnswered)
            co_return;
    }
    auto const opened = co_await applications->open({.path = path,
                                                     .contentType = nature.contentType,
                                                     .application = application,
                                                     .activationToken = context.opening.tokenNow()});
    context.say(isOfThisMachine(context) ? Text("opened %@ with %@", {file.name(), opened.name})
                                         : Text("opened a local copy of %@ — F4 edits the original", {file.name()}));
}

Task<void> showingFailures(OperationContext context, std::string name, Task<void> work)
{
    auto const outcome = co_await outcomeOf(std::move(work));
    if (outcome.failure)
        showFailure(context, name, outcome.failure);
}

} // namespace

Task<bool> mayFetch(OperationContext context, FileToOpen file, Purpose purpose)
{
    auto const size = co_await sizeOf(sourceOf(context, file));
    if (size <= mostFetchedUnasked)
        co_return true;
    auto const *const what = purpose == Purpose::opening ? "Opening" : "Editing";
    auto const answer = co_await context.dialogs->confirm(
        {.title = "Fetch " + onOneLine(file.name()) + "?",
         .message = "It is " + Fmt::size(size, EntryKind::file) + ". " + what +
                    " it means copying the whole file from " + onOneLine(context.operands.connection) + " first.",
         .okTitle = "Fetch"});
    co_return answer == Dialogs::Answer::ok;
}

Task<void> openWithSystem(OperationContext context, FileToOpen file, std::string application)
{
    auto name = file.name();
    return showingFailures(context, std::move(name), open(context, std::move(file), std::move(application)));
}

Task<void> chooseApplication(OperationContext context, FileToOpen file)
{
    auto name = file.name();
    return showingFailures(context, std::move(name), askForApplication(context, std::move(file)));
}

Task<std::vector<Application>> applicationsFor(OpeningServices services, std::string connection, FileToOpen file)
{
    if (connection != localConnection) {
        auto found = co_await services.applications->forName(file.name());
        co_return found;
    }
    auto const nature = co_await outcomeOf(services.applications->natureOf(file.path));
    if (!nature.value)
        co_return std::vector<Application>();
    auto found = co_await services.applications->forType(nature.value->contentType);
    co_return found;
}

} // namespace tw
