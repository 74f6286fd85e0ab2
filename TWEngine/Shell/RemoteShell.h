#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Provider/HostCommand.h"
#include "TWCore/Shell/ShellDialect.h"
#include "TWEngine/Runtime/ChildCommand.h"
#include "TWEngine/Runtime/Completion.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Shell/ClientWords.h"
#include "TWEngine/Shell/LineSpeed.h"
#include "TWEngine/Shell/RemoteShellError.h"
#include "TWEngine/Shell/RemoteShellOptions.h"
#include "TWEngine/Shell/ShellHandshake.h"
#include "TWEngine/Shell/ShellReader.h"
#include "TWEngine/Shell/ShellRequest.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace tw {

class IoThread;
class ShellClient;

/// What a request yields.
struct ListingResponse {
    std::string bytes; ///< the payload, unaltered
    std::int32_t status = 0;
    bool truncated = false; ///< the payload has reached the budget, where the host stops listing
    /// Of a listing: why the folder cannot be listed, see PathQuestion. Nothing if it can be, or if the host was not
    /// asked.
    std::optional<std::string> refusal = {};
    std::chrono::duration<double> elapsed{}; ///< of a listing: from its request to its end
};

/// How a listing is read whole.
struct WholeListing {
    LineSpeed line;
    /// Gets all that has come so far, on the strand, each time when more has come; never afterwards. Nothing, if what
    /// had come was no part of the listing.
    std::function<void(std::string_view)> onBytes = {};
};

/// One long conversation with one host: an ssh client whose remote command is a shell, into which the resident script
/// is loaded once. From then on a request is one line, and its answer is everything up to the session's own marker.
///
/// The host serves requests strictly in the order of their writing. Several may be in flight; ids match them up.
/// Nothing reconnects at this level, but the same object may connect again.
///
/// Threads: serialised on its own strand; every operation may be called from anywhere.
/// Lifetime: shared; the I/O thread outlives it. What reads the host's output does not keep it alive, and the ssh
/// client goes with it.
/// Cancellation: a listing ends at once, and its answer is dropped when it comes. Every other request that was sent is
/// waited for even if its caller is cancelled, since it may have changed something; the end of the session ends the
/// waiting. Connecting stops with its caller.
/// Errors: RemoteShellError. TimedOut is thrown when the late answer arrives or the session ends: the clock alone never
/// abandons an answer, so no answer is taken for another's.
class RemoteShell : public std::enable_shared_from_this<RemoteShell> {
public:
    using Seconds = std::chrono::duration<double>;

    /// What the owner hears of the session, on the strand. Any of them may be empty.
    struct Events {
        std::function<void(ClientStage)> onStage; ///< of a connection attempt, each at most once
        std::function<void()> onHeard;            ///< the host has sent something
        std::function<void()> onLost;             ///< the client has ended by itself
    };

    struct Collaborators {
        Strand strand;
        IoThread &io;
        std::shared_ptr<Clock> clock;
        /// The ssh client for this session. Its ends become pipes.
        ChildCommand client;
        /// Reads its standard error. Empty: the last words are kept as they are.
        ClientWords::Maker words = {};
        Events events = {};
    };

    /// Starts nothing. `host` is a destination as ssh takes it.
    RemoteShell(Collaborators collaborators, std::string host, RemoteShellOptions options, ShellDialect dialect);
    ~RemoteShell();

    /// Starts ssh, loads the script and waits for its handshake. If a start file of the host puts another shell in the
    /// place of bash, this is done once more without start files. Does nothing if connected. Throws ConnectFailed. A
    /// second call during the first starts over, and the first call fails.
    Task<void> connect();

    /// The entries below `path`, down to `depth` levels, cut at `room` bytes or at the budget of the session. A POSIX
    /// host is asked along with it whether the folder can be listed.
    Task<ListingResponse> list(std::string path, int depth, std::optional<std::size_t> room = {});

    /// The entries of the folder `path`, at most PacedListing::mostBytes. Requests behind it wait until it has ended.
    /// Without a limit of time. For POSIX hosts.
    Task<ListingResponse> listWhole(std::string path, WholeListing how);

    /// Bytes; 0 for a missing file.
    Task<std::int64_t> fileSize(std::string path);

    /// Runs a command in a subshell of the session. Without `limit`, the limit of the options holds. A command that
    /// changes something has none.
    Task<CommandResult> run(std::string command, std::optional<Seconds> limit,
                            CommandEffect effect = CommandEffect::none);

    /// At most `length` bytes from `offset` on; none for an unreadable file.
    Task<std::string> readChunk(std::string path, std::int64_t offset, std::size_t length);

    /// Ends the session. Requests in flight fail with Disconnected.
    Task<void> shutdown();

    struct State {
        bool isConnected = false;
        ShellHandshake handshake;
        std::optional<std::string> disconnectReason; ///< the last one
        std::string unexpectedOutput; ///< what the host has printed instead of a greeting in the last attempt
        ClientReport report;          ///< of the client of this connection attempt, or the last one
        bool isHeldUp = false; ///< by a listing whose caller has gone: what is asked next comes behind its answer
    };

    Task<State> state();

    /// What is known of the client of this connection attempt, or the last one. On the strand.
    ClientReport report() const;

    /// See State. On the strand.
    bool isHeldUp() const { return !left.empty(); }

private:
    using Answer = std::shared_ptr<Completion<ListingResponse>>;

    struct Paced;

    static Task<void> connectHere(std::shared_ptr<RemoteShell> self);
    /// False if another shell than bash has answered; the next attempt replaces it.
    static Task<bool> attempt(std::shared_ptr<RemoteShell> self);
    static Task<bool> greet(std::shared_ptr<RemoteShell> self, std::shared_ptr<ShellClient> session);
    static Task<std::int32_t> awaitHandshake(std::shared_ptr<RemoteShell> self, Answer answer);
    static Task<ListingResponse> request(std::shared_ptr<RemoteShell> self, ShellRequest request, Seconds limit);
    static Task<ListingResponse> listing(std::shared_ptr<RemoteShell> self, std::string path, int depth,
                                         std::size_t room);
    static Task<ListingResponse> wholeListing(std::shared_ptr<RemoteShell> self, std::string path, WholeListing how);
    static Task<ListingResponse> answerUnlessLeft(std::shared_ptr<RemoteShell> self, std::uint64_t id, Answer answer);
    static Task<void> turn(std::shared_ptr<RemoteShell> self);
    static Task<ListingResponse> answerWithin(std::shared_ptr<Clock> clock, Answer answer, Seconds limit);
    static Task<void> closeSlow(std::weak_ptr<RemoteShell> weak, std::shared_ptr<ShellClient> session, Seconds limit);
    static void close(std::weak_ptr<RemoteShell> const &weak, std::shared_ptr<ShellClient> const &session);
    static Task<void> listen(std::weak_ptr<RemoteShell> weak, std::shared_ptr<ShellClient> session,
                             std::shared_ptr<Clock> clock);
    static Task<State> stateHere(std::shared_ptr<RemoteShell> self);
    static Task<void> shutdownHere(std::shared_ptr<RemoteShell> self);

    Task<ListingResponse> ask(ShellRequest request, Seconds limit);
    void startSession();
    std::unique_ptr<ClientWords> newWords();
    void deliver(ShellReader::Frame frame);
    bool isTurnOfPaced() const;
    void noteOther(ShellReader::Frame const &frame);
    void advancePaced();
    void handleClosed(ShellClient const *closed, std::string const &detail);
    void teardown(std::optional<std::string> const &reason);
    void failPending(std::string const &detail);
    Answer expect(std::uint64_t id);

    // Constant after construction.
    Strand const strand;
    IoThread &io;
    std::shared_ptr<Clock> const clock;
    ChildCommand const client;
    std::string const host;
    RemoteShellOptions const options;
    ShellDialect const dialect;
    ClientWords::Maker const words;
    Events const events;
    std::string const nonce; ///< 16 hexadecimal digits; kept from one connection to the next

    // On the strand.
    std::shared_ptr<ShellClient> session; ///< null when idle
    bool connected = false;
    std::uint64_t nextRequestID = 1; ///< never reset; 0 is the handshake's
    std::map<std::uint64_t, Answer> pending;
    std::weak_ptr<ShellClient> instructed; ///< the session whose shell knows the question beside a listing
    std::set<std::uint64_t> left;          ///< the pending listings whose callers have gone
    std::shared_ptr<Paced> paced;          ///< null: requests can be written
    std::optional<std::string> disconnectReason;
    std::string unexpectedOutput;
    bool hasOtherShell = false; ///< see OtherShell
    ClientReport lastReport;
    ShellHandshake handshake;
};

} // namespace tw
