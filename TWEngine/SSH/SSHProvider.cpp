#include "TWEngine/SSH/SSHProvider.h"

#include "TWCore/Check.h"
#include "TWCore/Model/WindowsPath.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/SSH/HostFiles.h"

namespace tw {

namespace {

/// What of a file is asked for at once: far below what ends a session as a flood.
constexpr std::size_t mostBytesInAnAnswer = 16U << 20U;

/// What is sent unasked is small, also on a fast line: it takes the place of other listings in memory.
constexpr std::size_t maxScanBytes = 2U << 20U;

/// What a folder may have to be there with the first answer, on a fast line.
constexpr std::size_t maxFirstAnswerBytes = 1U << 20U;

RemoteShellOptions completed(RemoteShellOptions options, std::string const &host, ControlPath::Place const &sockets)
{
    if (!options.controlPath)
        options.controlPath = ControlPath::make(host, sockets);
    return options;
}

HostSessions::Choice choiceOf(CommandSession session)
{
    switch (session) {
    case CommandSession::interactive:
        return HostSessions::Choice::interactive;
    case CommandSession::background:
        return HostSessions::Choice::background;
    case CommandSession::work:
        return HostSessions::Choice::work;
    case CommandSession::longWork:
        return HostSessions::Choice::longWork;
    }
    bug("no such session");
}

} // namespace

SSHProvider::SSHProvider(Collaborators with, std::string toHost, RemoteShellOptions settings)
    : engine(with.engine),
      strand(engine.makeStrand()),
      sshProgram(std::move(with.sshProgram)),
      destination(std::move(toHost)),
      options(completed(std::move(settings), destination, with.sockets)),
      sessions(
          std::make_shared<HostSessions>(HostSessions::Collaborators{.engine = engine,
                                                                     .strand = strand,
                                                                     .sshProgram = sshProgram,
                                                                     .savedPasswords = std::move(with.savedPasswords),
                                                                     .loginDesk = std::move(with.loginDesk)},
                                         destination, options))
{
}

SSHCommandLine::Arguments SSHProvider::sharingOptions() const
{
    auto const &inUse = sessions->optionsInUse();
    return SSHCommandLine::transportOptions(inUse, inUse.controlPath);
}

Task<std::vector<std::string>> SSHProvider::transportOptions()
{
    return onStrand(strand, transportOptionsHere(shared_from_this()));
}

Task<std::vector<std::string>> SSHProvider::transportOptionsHere(Self self)
{
    co_return self->sharingOptions();
}

Task<UpdateStream<HostStatus>> SSHProvider::statuses()
{
    return onStrand(strand, statusesHere(shared_from_this()));
}

Task<UpdateStream<HostStatus>> SSHProvider::statusesHere(Self self)
{
    co_return self->sessions->statuses();
}

Task<void> SSHProvider::logIn()
{
    return onStrand(strand, sessions->logIn());
}

Task<void> SSHProvider::connect()
{
    return onStrand(strand, sessions->connect());
}

Task<void> SSHProvider::reconnect()
{
    return onStrand(strand, sessions->reconnect());
}

Task<void> SSHProvider::disconnect()
{
    return onStrand(strand, disconnectHere(shared_from_this()));
}

Task<void> SSHProvider::disconnectHere(Self self)
{
    auto const running = self->workBeside;
    for (auto const &work : running)
        work.cancel();
    co_await self->sessions->disconnect();
    for (auto const &work : running)
        co_await outcomeOf(work.wait());
}

Task<Listings> SSHProvider::fetch(std::string path, int depth, FetchPriority priority)
{
    return onStrand(strand, fetchHere(shared_from_this(), std::move(path), depth, priority));
}

Task<Listings> SSHProvider::fetchHere(Self self, std::string path, int depth, FetchPriority priority)
{
    if (priority == FetchPriority::interactive) {
        auto response = co_await list(self, Choice::interactive, path, depth, self->options.maxResponseBytes);
        co_return self->read(std::move(response), path, depth);
    }
    for (;;) {
        auto const room = self->line.room(maxScanBytes);
        auto response = co_await list(self, Choice::backgroundIfReady, path, depth, room);
        // The first room was a guess. The scan has measured the line.
        auto const wasNarrow = response.truncated && self->line.room(maxScanBytes) >= 2 * room;
        if (!wasNarrow)
            co_return self->read(std::move(response), path, depth);
    }
}

Task<ListingResponse> SSHProvider::list(Self self, Choice choice, std::string path, int depth, std::size_t room)
{
    auto response = co_await self->sessions->asking<ListingResponse>(
        choice, [path, depth, room](RemoteShell &shell) { return shell.list(path, depth, room); });
    self->line.note(response.bytes.size(), response.elapsed);
    // A host may send more than was asked for. The rest is dropped.
    response.bytes.resize(std::min(response.bytes.size(), self->options.maxResponseBytes));
    co_return response;
}

Task<Listings> SSHProvider::fetchWhole(std::string path, PartTaker onPart)
{
    return onStrand(strand, fetchWholeHere(shared_from_this(), std::move(path), std::move(onPart)));
}

Task<Listings> SSHProvider::fetchWholeHere(Self self, std::string path, PartTaker onPart)
{
    auto const clock = self->engine.clock();
    auto const begun = clock->steadyNow();
    auto const room = self->line.room(maxFirstAnswerBytes);
    auto response = co_await list(self, Choice::interactive, path, 1, room);
    if (!response.truncated || self->sessions->speaks() != ShellDialect::posix)
        co_return self->read(std::move(response), path, 1);

    // It may be asked again after a loss: each time is a listing of its own.
    auto const ask = [path, onPart, clock, begun, known = self->line](RemoteShell &shell) {
        auto const listing = std::make_shared<GrowingListing>(path, clock, begun, onPart);
        auto const hear = [listing](std::string_view bytes) { listing->hear(bytes); };
        return askWhole(shell.listWhole(path, {.line = known, .onBytes = hear}), listing);
    };
    auto answer = co_await self->sessions->asking<LongAnswer>(Choice::interactive, ask);
    self->line.note(answer.response.bytes.size(), answer.response.elapsed);
    co_return HostListing::read(std::move(answer.response), self->question(path, 1), clock->now(),
                                answer.listing->scan());
}

Task<SSHProvider::LongAnswer> SSHProvider::askWhole(Task<ListingResponse> asking,
                                                    std::shared_ptr<GrowingListing> listing)
{
    auto response = co_await std::move(asking);
    co_return LongAnswer{std::move(response), std::move(listing)};
}

Listings SSHProvider::read(ListingResponse response, std::string const &path, int depth) const
{
    return HostListing::read(std::move(response), question(path, depth), engine.clock()->now());
}

HostListing::Question SSHProvider::question(std::string const &path, int depth) const
{
    return {.host = destination, .dialect = sessions->speaks(), .path = path, .depth = depth};
}

Task<std::string> SSHProvider::readChunk(std::string path, std::int64_t offset, std::size_t length)
{
    return onStrand(strand, readChunkHere(sessions, std::move(path), offset, length));
}

Task<std::string> SSHProvider::readChunkHere(std::shared_ptr<HostSessions> sessions, std::string path,
                                             std::int64_t offset, std::size_t length)
{
    std::string bytes;
    while (bytes.size() < length) {
        auto const from = offset + static_cast<std::int64_t>(bytes.size());
        auto const wanted = std::min(length - bytes.size(), mostBytesInAnAnswer);
        auto piece =
            co_await sessions->asking<std::string>(Choice::interactive, [path, from, wanted](RemoteShell &shell) {
                return shell.readChunk(path, from, wanted);
            });
        auto const isLast = piece.size() < wanted;
        bytes = bytes.empty() ? std::move(piece) : bytes + piece;
        if (isLast)
            break;
    }
    co_return bytes;
}

Task<std::int64_t> SSHProvider::fileSize(std::string path)
{
    return onStrand(strand,
                    sessions->asking<std::int64_t>(Choice::interactive, [path = std::move(path)](RemoteShell &shell) {
                        return shell.fileSize(path);
                    }));
}

Task<CommandResult> SSHProvider::runCommand(HostCommand command)
{
    auto const choice = choiceOf(command.session);
    auto const effect = command.effect;
    auto const onLoss = command.onLoss;
    return onStrand(strand, sessions->asking<CommandResult>(
                                choice,
                                [command = std::move(command)](RemoteShell &shell) {
                                    return shell.run(command.text, command.limit, command.effect);
                                },
                                effect, onLoss));
}

Task<void> SSHProvider::makeDirectory(std::string path)
{
    return HostFiles::makeDirectory(shared_from_this(), std::move(path));
}

Task<void> SSHProvider::remove(std::vector<std::string> paths)
{
    return removePermanently(std::move(paths), LockedFolders::stay);
}

Task<void> SSHProvider::rename(std::string from, std::string to)
{
    return HostFiles::moveAll(shared_from_this(), {Move{std::move(from), std::move(to)}}, Existing::stays);
}

Task<void> SSHProvider::moveAll(std::vector<Move> moves, Existing existing)
{
    return HostFiles::moveAll(shared_from_this(), std::move(moves), existing);
}

Task<void> SSHProvider::removePermanently(std::vector<std::string> paths, LockedFolders locked)
{
    return HostFiles::remove(engine, shared_from_this(), std::move(paths), locked);
}

Task<void> SSHProvider::removeEmptyFolder(std::string path)
{
    return HostFiles::removeEmptyFolder(shared_from_this(), std::move(path));
}

Task<FolderFacts> SSHProvider::factsAbout(std::string folder, std::vector<std::string> names)
{
    return HostFiles::factsAbout(shared_from_this(), std::move(folder), std::move(names));
}

Task<void> SSHProvider::sync(std::string folder)
{
    return HostFiles::sync(shared_from_this(), std::move(folder));
}

Task<void> SSHProvider::copyOnRemote(std::vector<std::string> from, std::string to)
{
    return HostFiles::copy(shared_from_this(), std::move(from), std::move(to));
}

Task<std::int64_t> SSHProvider::totalSize(std::vector<std::string> paths)
{
    return HostFiles::totalSize(shared_from_this(), std::move(paths));
}

Task<ShellDialect> SSHProvider::dialect()
{
    return onStrand(strand, dialectHere(shared_from_this()));
}

Task<ShellDialect> SSHProvider::dialectHere(Self self)
{
    co_return self->sessions->speaks();
}

Task<ArchiveCapability> SSHProvider::archiveCapability()
{
    return onStrand(strand, archiveCapabilityHere(shared_from_this()));
}

Task<ArchiveCapability> SSHProvider::archiveCapabilityHere(Self self)
{
    auto const shell = self->sessions->interactiveShell();
    if (!shell)
        co_return ArchiveCapability();
    auto const state = co_await shell->state();
    co_return ArchiveCapability::parse(state.handshake.archiveTools);
}

Task<std::string> SSHProvider::defaultDirectory()
{
    return onStrand(strand, defaultDirectoryHere(shared_from_this()));
}

Task<std::string> SSHProvider::defaultDirectoryHere(Self self)
{
    auto const shell = self->sessions->interactiveShell();
    if (!shell)
        co_return "/";
    auto const state = co_await shell->state();
    auto const &start = state.handshake.startDirectory;
    co_return self->sessions->speaks() == ShellDialect::posix ? start : WindowsPath::fromNative(start);
}

Task<bool> SSHProvider::logsInByItself()
{
    return onStrand(strand, logsInByItselfHere(shared_from_this()));
}

Task<bool> SSHProvider::logsInByItselfHere(Self self)
{
    co_return !self->options.askpassAccount && !self->sessions->neededTheUser();
}

Task<bool> SSHProvider::isLive()
{
    return onStrand(strand, isLiveHere(shared_from_this()));
}

Task<bool> SSHProvider::isLiveHere(Self self)
{
    auto const shell = self->sessions->interactiveShell();
    if (!shell)
        co_return false;
    auto const state = co_await shell->state();
    co_return state.isConnected;
}

Task<std::string> SSHProvider::remoteImplementation()
{
    return onStrand(strand, remoteImplementationHere(shared_from_this()));
}

Task<std::string> SSHProvider::remoteImplementationHere(Self self)
{
    auto const shell = self->sessions->interactiveShell();
    auto const state = shell ? co_await shell->state() : RemoteShell::State{};
    co_return state.handshake.implementation;
}

} // namespace tw
