#pragma once

#include "TWCore/Provider/CommandHost.h"
#include "TWCore/Provider/FileSystemReader.h"
#include "TWCore/Provider/FileSystemWriter.h"
#include "TWEngine/SSH/ControlPath.h"
#include "TWEngine/SSH/GrowingListing.h"
#include "TWEngine/SSH/HostAccess.h"
#include "TWEngine/SSH/HostListing.h"
#include "TWEngine/SSH/HostSessions.h"

#include <memory>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// The files of one host.
///
/// It asks over HostSessions. A lost session is connected again once and the question is asked again, unless it changes
/// something: then it fails with OutcomeUnknown.
///
/// Threads: serialised on its own strand; every operation may be called from anywhere.
/// Lifetime: shared; the engine outlives it. It is disconnected before it is dropped.
/// Cancellation: connecting, listings and the transfer of a file stop; another question that was sent is waited for.
/// Errors: RemoteShellError, ReadError, FileOperationError, and SpawnError if ssh cannot be started for a file. What is
/// in flight at a disconnect fails with Disconnected and is not asked again.
class SSHProvider final : public FileSystemReader,
                          public FileSystemWriter,
                          public CommandHost,
                          public HostAccess,
                          public std::enable_shared_from_this<SSHProvider> {
public:
    struct Collaborators {
        EngineRuntime &engine;
        /// The ssh client. Anything but the usual one is for tests, which cannot give ssh another home.
        std::string sshProgram = std::string(SSHCommandLine::program);
        ControlPath::Place sockets = ControlPath::Place::ofThisUser();
        SavedPasswords savedPasswords = {};
        std::shared_ptr<LoginDesk> loginDesk = {}; ///< null: ssh never asks the user
    };

    /// Starts nothing. `host` is a destination as ssh takes it.
    SSHProvider(Collaborators collaborators, std::string host, RemoteShellOptions options = {});

    std::string identifier() const override { return "ssh:" + destination; }

    std::string displayName() const override { return destination; }

    int maxUsefulDepth() const override { return 4; }

    std::optional<std::string> persistentCacheIdentity() const override { return identifier(); }

    /// Connects the first session; see HostSessions.
    Task<void> connect() override;

    Task<UpdateStream<HostStatus>> statuses() override;
    Task<void> logIn() override;

    Task<Listings> fetch(std::string path, int depth, FetchPriority priority) override;

    /// At most PacedListing::mostBytes.
    Task<Listings> fetchWhole(std::string path, PartTaker onPart) override;

    /// Ends all sessions. A later connect does not ask again what the host speaks.
    Task<void> disconnect() override;

    Task<std::string> readChunk(std::string path, std::int64_t offset, std::size_t length) override;
    Task<std::int64_t> fileSize(std::string path) override;

    /// Uses an ssh client of its own, see HostSlots, so that a large file holds nothing else up.
    Task<void> download(std::string path, std::string localPath) override;
    Task<void> upload(std::string localPath, std::string path) override;

    std::string host() const override { return destination; }

    Task<ShellDialect> dialect() override;
    Task<std::string> defaultDirectory() override;
    Task<ArchiveCapability> archiveCapability() override;
    Task<std::vector<std::string>> transportOptions() override;
    Task<CommandResult> runCommand(HostCommand command) override;

    /// Nothing that was deleted on a host can be brought back.
    bool deleteIsReversible() const override { return false; }

    // See HostFiles.
    Task<void> makeDirectory(std::string path) override;
    Task<void> remove(std::vector<std::string> paths) override;
    Task<void> rename(std::string from, std::string to) override;
    Task<void> moveAll(std::vector<Move> moves, Existing existing) override;
    Task<void> removePermanently(std::vector<std::string> paths, LockedFolders locked) override;
    Task<void> removeEmptyFolder(std::string path) override;
    Task<FolderFacts> factsAbout(std::string folder, std::vector<std::string> names) override;
    Task<void> sync(std::string folder) override;

    /// Uses an ssh client of its own, since the list of a large tree is more than a session keeps. For POSIX hosts.
    Task<Survey> survey(std::string folder, std::vector<std::string> names, Survey::Detail detail) override;

    Task<void> copyOnRemote(std::vector<std::string> from, std::string to);
    Task<std::int64_t> totalSize(std::vector<std::string> paths);

    /// See HostSessions.
    Task<void> reconnect();

    Task<bool> isLive();

    /// By a key, an agent or a saved password. False if the user has answered a question for the connection in use.
    Task<bool> logsInByItself() override;

    /// What lists folders on the host: "gnu" or "perl", and "unknown" without a session.
    Task<std::string> remoteImplementation();

private:
    using Self = std::shared_ptr<SSHProvider>;
    using Choice = HostSessions::Choice;

    struct LongAnswer {
        ListingResponse response;
        std::shared_ptr<GrowingListing> listing; ///< has read the beginning of the response
    };

    static Task<void> disconnectHere(Self self);
    static Task<Listings> fetchHere(Self self, std::string path, int depth, FetchPriority priority);
    static Task<Listings> fetchWholeHere(Self self, std::string path, PartTaker onPart);
    static Task<ListingResponse> list(Self self, Choice choice, std::string path, int depth, std::size_t room);
    static Task<LongAnswer> askWhole(Task<ListingResponse> asking, std::shared_ptr<GrowingListing> listing);
    HostListing::Question question(std::string const &path, int depth) const;
    Listings read(ListingResponse response, std::string const &path, int depth) const;
    static Task<std::string> readChunkHere(std::shared_ptr<HostSessions> sessions, std::string path,
                                           std::int64_t offset, std::size_t length);
    static Task<void> downloadHere(Self self, std::string path, std::string localPath);
    static Task<void> uploadHere(Self self, std::string localPath, std::string path);
    static Task<ShellDialect> dialectHere(Self self);
    static Task<UpdateStream<HostStatus>> statusesHere(Self self);
    static Task<std::vector<std::string>> transportOptionsHere(Self self);
    SSHCommandLine::Arguments sharingOptions() const;
    static Task<std::string> defaultDirectoryHere(Self self);
    static Task<ArchiveCapability> archiveCapabilityHere(Self self);
    static Task<bool> logsInByItselfHere(Self self);
    static Task<bool> isLiveHere(Self self);
    static Task<std::string> remoteImplementationHere(Self self);

    /// Runs `work`, which needs an ssh client of its own, on the strand. A disconnect ends it.
    Task<void> beside(Task<void> work);
    static Task<void> besideHere(Self self, Task<void> work);
    static Task<void> withClient(Self self, Task<void> work);
    static Task<Survey> surveyBeside(Self self, std::string folder, std::vector<std::string> names,
                                     Survey::Detail detail);
    static Task<void> surveyHere(Self self, std::string folder, std::vector<std::string> names, Survey::Detail detail,
                                 std::shared_ptr<Survey> result);

    // Constant after construction.
    EngineRuntime &engine;
    Strand const strand;
    std::string const sshProgram;
    std::string const destination;
    RemoteShellOptions const options;
    std::shared_ptr<HostSessions> const sessions;

    // On the strand.
    std::vector<SharedTask<void>> workBeside; ///< at most HostSlots::atOnce of them run
    LineSpeed line;
};

} // namespace tw
