#pragma once

#include "Tarnwick/Editing/RemoteEditSession.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tw {

/// The files of hosts that are being edited.
///
/// Threads: main context only.
/// Lifetime: shared; sessions end with it.
class EditSessions : public std::enable_shared_from_this<EditSessions> {
public:
    using Session = std::shared_ptr<RemoteEditSession>;

    EditSessions(RemoteEditSession::Ports ports, EditStaging::Place where);

    /// A session was added, has ended or has changed.
    std::function<void()> onChanged;
    /// See RemoteEditSession.
    std::function<void(std::shared_ptr<Browser> host, std::string path)> onUploaded;

    std::vector<Session> const &all() const noexcept { return sessions; }

    /// Null if that file is not being edited.
    Session find(std::string const &connection, std::string const &path) const;

    /// Keeps others from fetching the same file while it is held. Null if somebody holds it.
    std::shared_ptr<void> claim(std::string const &connection, std::string const &path);

    /// Brings a file here, as a copy for an editor. Throws what EditedFile::fetch throws.
    Task<EditedFile::Fetched> fetch(std::shared_ptr<FileSystemProvider> host, std::string connection, std::string path);

    /// Removes a copy that no editor could be started for.
    void drop(EditedFile::Fetched const &fetched) const;

    Session add(EditedFile::Fetched fetched) { return add(std::move(fetched), RemoteEditSession::Origin::fetched); }

    /// Adds the sessions that a killed program has left.
    void resume();

    /// "host:path" of each session with a save that is not on its host.
    std::vector<std::string> unsaved() const;

    /// The program ends.
    void leaveForNextStart();

private:
    using Weak = std::weak_ptr<EditSessions>;

    static Task<EditedFile::Fetched> fetchHere(EngineRuntime *engine, EditStaging::Place where,
                                               std::shared_ptr<FileSystemProvider> host, EditStaging::Record record);
    static Task<void> resumeHere(Weak weak, EngineRuntime *engine, EditStaging::Place where);
    Session add(EditedFile::Fetched fetched, RemoteEditSession::Origin origin);
    void remove(RemoteEditSession const *session);
    void changed() const;

    RemoteEditSession::Ports const with;
    EditStaging::Place const place;
    std::vector<Session> sessions;
    std::set<std::pair<std::string, std::string>> claimed; ///< connection and path
};

} // namespace tw
