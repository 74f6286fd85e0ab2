#include "Tarnwick/Editing/EditSessions.h"

#include "TWCore/Async/Outcome.h"
#include "TWEngine/Runtime/EngineRuntime.h"

#include <algorithm>

namespace tw {

EditSessions::EditSessions(RemoteEditSession::Ports ports, EditStaging::Place where)
    : with(std::move(ports)), place(std::move(where))
{
}

EditSessions::Session EditSessions::find(std::string const &connection, std::string const &path) const
{
    auto const found =
        std::ranges::find_if(sessions, [&](auto const &session) { return session->isOf(connection, path); });
    return found == sessions.end() ? nullptr : *found;
}

std::shared_ptr<void> EditSessions::claim(std::string const &connection, std::string const &path)
{
    auto const [file, isNew] = claimed.emplace(connection, path);
    if (!isNew)
        return nullptr;
    return {this, [weak = weak_from_this(), key = *file](void *) {
                if (auto const self = weak.lock())
                    self->claimed.erase(key);
            }};
}

Task<EditedFile::Fetched> EditSessions::fetch(std::shared_ptr<FileSystemProvider> host, std::string connection,
                                              std::string path)
{
    return fetchHere(&with.engine, place, std::move(host),
                     {.connection = std::move(connection), .path = std::move(path)});
}

Task<EditedFile::Fetched> EditSessions::fetchHere(EngineRuntime *engine, EditStaging::Place where,
                                                  std::shared_ptr<FileSystemProvider> host, EditStaging::Record record)
{
    auto const copy = co_await engine->files().run(
        where.base, FileLanes::LastLink::keep, WorkPriority::interactive,
        [record, where](std::string const & /*place*/) { return EditStaging::make(record, where); });
    auto fetched = co_await outcomeOf(EditedFile::fetch(engine, host, copy));
    if (fetched.failure) {
        engine->workers().executor(WorkPriority::background)->post([copy] { EditStaging::remove(copy); });
        std::rethrow_exception(fetched.failure);
    }
    co_return *std::move(fetched.value);
}

void EditSessions::drop(EditedFile::Fetched const &fetched) const
{
    with.engine.workers().executor(WorkPriority::background)->post([copy = fetched.copy] {
        EditStaging::remove(copy);
    });
}

EditSessions::Session EditSessions::add(EditedFile::Fetched fetched, RemoteEditSession::Origin origin)
{
    auto session = std::make_shared<RemoteEditSession>(with, std::move(fetched), origin);
    session->onChanged = [this] { changed(); };
    session->onUploaded = [this](std::shared_ptr<Browser> host, std::string path) {
        if (onUploaded)
            onUploaded(std::move(host), std::move(path));
    };
    session->onFinished = [this, ended = session.get()] { remove(ended); };
    sessions.push_back(session);
    session->begin();
    changed();
    return session;
}

void EditSessions::remove(RemoteEditSession const *session)
{
    // The session itself is the caller, so it is kept until that call has returned.
    auto const found = std::ranges::find(sessions, session, &Session::get);
    if (found == sessions.end())
        return;
    auto const kept = *found;
    sessions.erase(found);
    kept->onChanged = nullptr;
    changed();
    with.mainContext->post([kept] {});
}

void EditSessions::resume()
{
    spawn({with.mainContext, {}}, resumeHere(weak_from_this(), &with.engine, place));
}

Task<void> EditSessions::resumeHere(Weak weak, EngineRuntime *engine, EditStaging::Place where)
{
    auto const left =
        co_await engine->workers().run(WorkPriority::background, [where] { return EditStaging::takeOver(where); });
    auto const self = weak.lock();
    if (!self)
        co_return;
    for (auto const &copy : left)
        self->add({.copy = copy, .way = EditCommand::Way::rename}, RemoteEditSession::Origin::left);
}

std::vector<std::string> EditSessions::unsaved() const
{
    std::vector<std::string> names;
    for (auto const &session : sessions) {
        if (session->isUnsaved())
            names.push_back(session->state().connection + ':' + session->state().path);
    }
    return names;
}

void EditSessions::leaveForNextStart()
{
    for (auto const &session : sessions)
        session->leaveForNextStart();
    onUploaded = nullptr;
    onChanged = nullptr;
    sessions.clear();
}

void EditSessions::changed() const
{
    if (onChanged)
        onChanged();
}

} // namespace tw
