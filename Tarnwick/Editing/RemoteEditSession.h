#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Async/Outcome.h"
#include "TWEngine/Editing/EditedFile.h"
#include "Tarnwick/Editing/EditState.h"
#include "Tarnwick/Editing/SaveWatch.h"
#include "Tarnwick/Panes/Alarm.h"

#include <functional>
#include <memory>
#include <string>

namespace tw {

class Browser;
class EngineRuntime;

/// A file of a host that is edited here with any program: each save of the copy goes to the host once it has settled.
///
/// What somebody else has changed on the host since the fetch or the last upload is not replaced; the user is asked
/// then. A failed upload is tried again with the next save, or when the user asks for it.
///
/// Threads: main context only.
/// Lifetime: shared; its tasks hold it weakly. The engine outlives it. The copy stays on the disk, and is offered again
/// at the next start, unless the user ended the session.
class RemoteEditSession : public std::enable_shared_from_this<RemoteEditSession> {
public:
    struct Ports {
        EngineRuntime &engine;
        std::shared_ptr<Executor> mainContext;
        std::shared_ptr<Clock> clock;
        /// The host of a connection, once it is up.
        std::function<Task<std::shared_ptr<Browser>>(std::string connection)> host;
        /// Keeps other operations from changing the file until the result goes. Throws if one of them changes it.
        /// Empty: there are no others.
        std::function<Task<std::shared_ptr<void const>>(std::shared_ptr<Browser> host, std::string path)> claim = {};
    };

    /// `state` has changed.
    std::function<void()> onChanged;
    /// The file at this path of the host was written.
    std::function<void(std::shared_ptr<Browser> host, std::string path)> onUploaded;
    std::function<void()> onFinished;

    enum class Origin {
        fetched, ///< just now
        left,    ///< by a process that ended before the upload
    };

    RemoteEditSession(Ports ports, EditedFile::Fetched file, Origin origin);
    ~RemoteEditSession();

    RemoteEditSession(RemoteEditSession const &) = delete;
    RemoteEditSession &operator=(RemoteEditSession const &) = delete;

    /// Watches the copy from now on.
    void begin();

    EditState const &state() const noexcept { return shown; }

    /// The copy, for the editor.
    EditStaging::Copy const &staged() const noexcept { return copy; }

    std::string const &localPath() const noexcept { return copy.path; }

    /// An editor was started that leaves its end mark beside the copy. The session ends with the last of them, after
    /// the upload of what was saved.
    void expectEditorsEnd() { ++startedEditors; }

    bool isOf(std::string const &connection, std::string const &path) const;

    /// True if the last known save is not on the host.
    bool isUnsaved() const { return seen && seen != copy.record.uploaded; }

    void uploadNow();

    /// Ends the session; asks first if the last save is not on the host.
    void done();

    // Answers to a conflict.
    void overwrite();
    void saveBeside();

    // Answers to the question before leaving; the third answer is `uploadNow`.
    void discard() { finish(); }

    void stay();

    /// The program ends. A copy that was not uploaded stays on the disk.
    void leaveForNextStart();

private:
    using Weak = std::weak_ptr<RemoteEditSession>;
    using Result = EditedFile::Result;

    static Task<void> listen(Weak weak, EngineRuntime *engine, std::string folder);
    static Task<void> look(Weak weak, EngineRuntime *engine, EditStaging::Copy copy);
    static Task<void> lookBeforeLeaving(Weak weak, EngineRuntime *engine, std::string path);
    static Task<Result> put(Ports ports, EditStaging::Copy sent, std::shared_ptr<std::shared_ptr<Browser>> host);
    static Task<void> upload(Weak weak, Ports with, EditStaging::Copy sent);

    /// What a tick finds on the disk.
    struct Found {
        std::optional<EditStaging::Stamp> stamp; ///< of the copy
        std::int64_t endedEditors = 0;
    };

    static Found findNow(EditStaging::Copy const &copy);

    void tick();
    void ticked(Found const &found);
    void editorsEnded();
    void startUpload(EditStaging::Copy sent);
    void ended(EditStaging::Copy sent, Outcome<Result> outcome);
    void arrived(EditStaging::Copy sent, Result const &result);
    void ask(EditState::Question question, Text status);
    void askBeforeLeaving();
    void say(Text status);
    void showWay(EditCommand::Way way);
    void failed(Text reason);
    void finish();
    void changed() const;

    Ports const with;
    EditStaging::Copy copy;
    SaveWatch watch;
    std::optional<EditStaging::Stamp> seen; ///< at the last look
    EditState shown;
    std::string versionThere; ///< of the file on the host that a conflict is about
    bool isLooking = false;
    bool looksOnceMore = false;
    bool isLeaving = false;  ///< as soon as everything is uploaded
    EditState beforeLeaving; ///< what the question before leaving took the place of
    std::int64_t startedEditors = 0;
    std::int64_t knownEnds = 0; ///< editors whose end was acted on
    std::stop_source events;
    Alarm timer;
};

} // namespace tw
