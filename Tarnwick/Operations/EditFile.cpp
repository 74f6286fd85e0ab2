#include "Tarnwick/Operations/EditFile.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "TWEngine/Applications/ApplicationError.h"
#include "Tarnwick/Connections/ConnectionItem.h"
#include "Tarnwick/Editing/EditSessions.h"
#include "Tarnwick/Editing/TerminalEditor.h"
#include "Tarnwick/Panes/PaneStatus.h"

namespace tw {

namespace {

constexpr auto plainText = "text/plain";

Task<Application> openAs(OpeningServices services, std::string path, std::string contentType)
{
    return services.applications->open(
        {.path = std::move(path), .contentType = std::move(contentType), .activationToken = services.tokenNow()});
}

/// What an editor is started on.
struct Subject {
    std::string path;
    std::uint16_t modeThere = 0; ///< permission bits of the original of a copy
    std::string endMark = {};    ///< see TerminalEditor
};

enum class Editor { application, terminal };

/// What opens a type may execute what it opens, so only documents are opened by their type.
Task<void> openApplication(OpeningServices services, Subject subject)
{
    auto const nature = co_await services.applications->natureOf(subject.path, subject.modeThere);
    auto const isDocument = nature.kind == FileNature::Kind::document;
    auto const type = isDocument ? nature.contentType : std::string(plainText);
    auto const opened = co_await outcomeOf(openAs(services, subject.path, type));
    if (!opened.failure)
        co_return;
    if (type == plainText || !failureIs<ApplicationError::NothingOpens>(opened.failure))
        std::rethrow_exception(opened.failure);
    co_await openAs(services, subject.path, plainText);
}

Task<Editor> openEditor(OpeningServices services, Subject subject)
{
    auto const editor = services.terminalEditor ? services.terminalEditor() : std::string();
    if (editor.empty()) {
        co_await openApplication(services, subject);
        co_return Editor::application;
    }
    auto command = TerminalEditor::command(editor, subject.path, subject.endMark);
    co_await services.applications->runInTerminal("the editor", std::move(command), services.tokenNow());
    co_return Editor::terminal;
}

Subject subjectOf(EditStaging::Copy const &copy, FileToOpen const &file)
{
    return {.path = copy.path, .modeThere = file.mode, .endMark = EditStaging::endMark(copy)};
}

/// The file is being edited already.
Task<void> openEditorAgain(OpeningServices services, EditSessions::Session session, FileToOpen file)
{
    auto const editor = co_await openEditor(services, subjectOf(session->staged(), file));
    if (editor == Editor::terminal)
        session->expectEditorsEnd();
}

Task<EditedFile::Fetched> copyToEdit(OperationContext context, FileToOpen file)
{
    auto const from = context.operands.connection;
    auto const provider = context.operands.browser->providerRef();
    auto work = context.beginWork();
    context.say({"fetching %@…", {file.name()}});
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
    if (auto const session = edits->find(from, file.path)) {
        co_await openEditorAgain(context.opening, session, file);
        co_return;
    }
    // The key may be pressed again before the file is here.
    auto const claim = edits->claim(from, file.path);
    if (!claim)
        co_return;
    auto fetched = co_await copyToEdit(context, file);
    auto const opened = co_await outcomeOf(openEditor(context.opening, subjectOf(fetched.copy, file)));
    if (opened.failure) {
        edits->drop(fetched);
        std::rethrow_exception(opened.failure);
    }
    auto const session = edits->add(std::move(fetched));
    if (*opened.value == Editor::terminal)
        session->expectEditorsEnd();
    context.say({"editing %@ — each save goes to %@", {file.name(), from}});
}

Task<void> edit(OperationContext context, FileToOpen file)
{
    if (file.kind != EntryKind::file && file.kind != EntryKind::symlink)
        throw ApplicationError::NothingOpens(file.path);
    if (context.operands.connection == localConnection)
        co_await openEditor(context.opening, {.path = file.path});
    else
        co_await editThere(context, file);
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
    context.say("");
    if (failureIs<Cancelled>(outcome.failure))
        co_return;
    if (failureIs<ApplicationError::NothingOpens>(outcome.failure))
        context.warn({"nothing on this Mac opens %@", {name}});
    else
        co_await context.dialogs->error(PaneStatus::describe(outcome.failure));
}

} // namespace tw
