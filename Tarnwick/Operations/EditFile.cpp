#include "Tarnwick/Operations/EditFile.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWEngine/Applications/ApplicationError.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Editing/EditSessions.h"
#include "Tarnwick/Panes/PaneStatus.h"

namespace tw {

namespace {

constexpr auto plainText = "text/plain";

void say(OperationContext const &context, Text text)
{
    if (auto const asked = context.pane.lock())
        asked->showStatus(std::move(text));
}

Task<Application> openAs(OpeningServices services, std::string path, std::string contentType)
{
    auto const token = services.activationToken ? services.activationToken() : std::string();
    return services.applications->open(
        {.path = std::move(path), .contentType = std::move(contentType), .activationToken = token});
}

bool hasNoApplication(std::exception_ptr const &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (ApplicationError::NothingOpens const &) {
        return true;
    } catch (...) {
        return false;
    }
}

/// What opens a type may execute what it opens, so only documents are opened by their type.
Task<void> openEditor(OpeningServices services, std::string path, std::uint16_t modeThere)
{
    auto const nature = co_await services.applications->natureOf(path, modeThere);
    auto const isDocument = nature.kind == FileNature::Kind::document;
    auto const type = isDocument ? nature.contentType : std::string(plainText);
    auto const opened = co_await outcomeOf(openAs(services, path, type));
    if (!opened.failure)
        co_return;
    if (type == plainText || !hasNoApplication(opened.failure))
        std::rethrow_exception(opened.failure);
    co_await openAs(services, path, plainText);
}

Task<EditedFile::Fetched> bring(OperationContext context, FileToOpen file)
{
    auto const from = context.operands.connection;
    auto const provider = context.operands.browser->providerRef();
    auto work = context.beginWork();
    say(context, {"fetching %@…", {file.name()}});
    auto const wanted = co_await mayFetch(context, file, Purpose::editing);
    if (!wanted)
        throw Cancelled();
    auto const stop = std::make_shared<std::stop_source>();
    auto const shown =
        context.dialogs->progress("Fetching " + onOneLine(file.name()) + "…", [stop] { stop->request_stop(); });
    auto fetched = co_await context.opening.edits->fetch(provider, from, file.path).withStop(stop->get_token());
    co_return fetched;
}

Task<void> editThere(OperationContext context, FileToOpen file)
{
    auto const edits = context.opening.edits;
    auto const from = context.operands.connection;
    auto const session = edits->find(from, file.path);
    if (session) {
        co_await openEditor(context.opening, session->localPath(), file.mode);
        co_return;
    }
    auto fetched = co_await bring(context, file);
    auto const opened = co_await outcomeOf(openEditor(context.opening, fetched.copy.path, file.mode));
    if (opened.failure) {
        edits->drop(fetched);
        std::rethrow_exception(opened.failure);
    }
    edits->add(std::move(fetched));
    say(context, {"editing %@ — each save goes to %@", {file.name(), from}});
}

Task<void> edit(OperationContext context, FileToOpen file)
{
    if (file.kind != EntryKind::file && file.kind != EntryKind::symlink)
        throw ApplicationError::NothingOpens(file.path);
    if (context.operands.connection == localConnection)
        co_await openEditor(context.opening, file.path, 0);
    else
        co_await editThere(context, file);
}

bool isStopped(std::exception_ptr const &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (Cancelled const &) {
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

Task<void> editFile(OperationContext context, FileToOpen file)
{
    auto const isThere = context.operands.connection != localConnection;
    if (isThere && (!context.opening.edits || !EditedFile::isPossible(context.operands.browser->providerRef()))) {
        context.warn({"%@ cannot be edited", {context.operands.connection}});
        co_return;
    }
    auto const name = file.name();
    auto const outcome = co_await outcomeOf(edit(context, std::move(file)));
    if (!outcome.failure)
        co_return;
    say(context, "");
    if (isStopped(outcome.failure))
        co_return;
    if (hasNoApplication(outcome.failure))
        context.warn({"nothing on this Mac opens %@", {name}});
    else
        co_await context.dialogs->error(PaneStatus::describe(outcome.failure));
}

} // namespace tw
