#pragma once

#include "TWCore/Provider/HostStatus.h"
#include "TWEngine/Shell/ClientReport.h"
#include "TWEngine/Shell/RemoteShellOptions.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace tw {

/// The life of the connection to one host: decides what to do next, and does nothing itself.
///
/// Each event returns the orders that follow from it, which the owner carries out in their order. The same events at
/// the same times give the same orders. docs/architecture.md has the picture.
///
/// Threads: none of its own; used by one owner at a time.
class HostLife {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::steady_clock::duration;
    using Phase = HostStatus::Phase;
    using Sharing = RemoteShellOptions::Sharing;

    /// Whether ssh may ask the user for what it needs to know.
    enum class Way { quiet, asking };

    /// The sessions with a host. A session answers strictly in order, so each kind of request has its own.
    enum class Role {
        first,      ///< logs in, and carries what a person waits for
        background, ///< what nobody waits for
        work,       ///< what changes something or takes long
        secondWork, ///< what would wait behind the work of the first such session
        thirdWork,
        spare, ///< takes the place of the first one when that is held up
    };

    /// The sessions that carry work, in the order in which they are connected.
    static constexpr std::array workRoles{Role::work, Role::secondWork, Role::thirdWork};

    /// So many of them go over a connection that the user has opened. A server takes ten sessions a connection as it is
    /// delivered. With five sessions and the four clients of HostSlots, one is left for a terminal of the user.
    static constexpr std::size_t workSessionsBesideUser = 2;

    static constexpr bool isWork(Role role) { return std::ranges::find(workRoles, role) != workRoles.end(); }

    /// Where a work session stands among `workRoles`.
    static constexpr std::size_t workIndex(Role role)
    {
        return static_cast<std::size_t>(role) - static_cast<std::size_t>(Role::work);
    }

    /// Which session a request is for.
    enum class Choice {
        interactive,
        background,
        backgroundIfReady, ///< the first one if there is no second
        work,
        longWork ///< leaves a work session to the other work
    };

    /// The requests that a work session has and has not answered yet.
    struct Load {
        std::size_t requests = 0;
        std::size_t longOnes = 0; ///< those of them that are long work
    };

    /// What the sessions are busy with.
    struct Busy {
        bool isFirstHeldUp = false; ///< by a listing that nobody waits for
        std::array<Load, workRoles.size()> work = {};
    };

    struct Order {
        enum class Kind {
            beginAttempt,   ///< connect the first session; `number` is the attempt's
            endAttempt,     ///< stop it and tell its waiters `why`
            beginSpare,     ///< connect the spare session
            beginReplacing, ///< connect beside the connection that is silent
            endReplacing,   ///< stop that: the silent one has answered
            replace,        ///< the new connection takes the place of the silent one
        };

        enum class Why { none, noAnswer, nobodyWaits, superseded, refusedByUser, refusedByHost, ended };

        Kind kind = Kind::beginAttempt;
        std::uint64_t number = 0;
        Way way = Way::quiet;
        Why why = Why::none;

        friend bool operator==(Order const &, Order const &) = default;
    };

    using Orders = std::vector<Order>;

    /// Where a request goes.
    struct Route {
        Role role = Role::first;
        bool isReady = false;   ///< false: the session is to be connected first, and `route` to be asked again
        bool hasToWait = false; ///< until long work has ended; `route` is to be asked again then

        friend bool operator==(Route const &, Route const &) = default;
    };

    /// How long an attempt may stay in each phase, see RemoteShellOptions.
    struct Limits {
        Duration reaching = std::chrono::seconds(10);
        Duration loggingIn = std::chrono::seconds(60); ///< without the time in which a question is open
        Duration waitingForShell = std::chrono::seconds(60);
    };

    /// ssh has the limit for reaching the host itself. Its own words are better, so they get a moment to come first.
    static constexpr std::chrono::milliseconds grace{250};
    /// A host that sends nothing for so long while a person waits counts as silent.
    static constexpr std::chrono::seconds silenceLimit{5};
    /// The user may leave a folder whose listing takes longer. The next one then needs the spare session.
    static constexpr std::chrono::milliseconds lateAnswer{400};

    explicit HostLife(Limits allowed) : limits(allowed), phaseLimit(allowed.reaching) {}

    // Callers that wait for the host.

    /// A caller waits for the host to be up. Begins an attempt, or joins the one under way, unless it is up.
    Orders want(Way way, Time now);

    /// A caller of `want` does not wait any more for the attempt with that number. The last one ends it.
    Orders leave(std::uint64_t attempt, Time now);

    // What becomes of an attempt. Events of an attempt that has ended have no effect.

    /// What the user's configuration allows for reaching the host, counted from the beginning of the attempt.
    void limitReaching(std::uint64_t attempt, Duration limit);
    void reached(std::uint64_t attempt, ClientStage stage, Time now);
    void questionOpened(std::uint64_t attempt, Time now);
    void questionClosed(std::uint64_t attempt, Time now);
    /// No question is answered any more.
    Orders refuse(std::uint64_t attempt, Order::Why why, Time now);
    void attemptUp(std::uint64_t attempt, Time now, Sharing sharing = Sharing::ours);
    void attemptFailed(std::uint64_t attempt, Time now);

    // The sessions of a host that is up.

    /// The session for a request.
    Route route(Choice choice, Busy const &busy) const;
    void sessionUp(Role role);
    /// It could not be connected. Until the host is connected anew, its requests go over the first session, and work
    /// over the work sessions that there are. A host that refuses one for work is asked for no further one.
    void sessionRefused(Role role);
    /// It has ended, or was found to have ended. With `generation` of the time when it was used. The end of a
    /// background session that was up counts as that of the first one: a cut line ends both, and either may notice
    /// first.
    Orders sessionLost(Role role, std::uint64_t generation, Time now);
    /// The spare session has taken the place of the first, whose old session has ended.
    void spareTookOver();

    // Requests for the first session, from when they are asked on: what waits for a session waits for the host.

    /// A request that is not repeatable may have changed the host when its session ends, so it is not ended for
    /// another.
    Orders asked(std::uint64_t request, bool isRepeatable, Time now);
    /// It was answered, has failed, or its caller has gone.
    void settled(std::uint64_t request);
    /// Something came over the first session.
    Orders heard(Time now);

    /// What becomes of the connection beside a silent one.
    Orders replacementUp(std::uint64_t number, Time now);
    void replacementFailed(std::uint64_t number, Time now);

    /// All is to end. The next `want` begins anew.
    Orders end(Time now);

    /// A time that was announced by `wakeAt` has come.
    Orders tick(Time now);

    /// When to call `tick` at the latest.
    std::optional<Time> wakeAt() const;

    HostStatus status() const { return {.phase = phase, .since = since}; }

    bool isUp() const { return phase == Phase::up || phase == Phase::silent; }

    bool isAttempting() const;

    /// False: nobody has ever asked for the host, and a request is not what begins to.
    bool wasWanted() const { return attempts > 0; }

    bool isCurrent(std::uint64_t attempt) const { return isAttempting() && attempt == attempts; }

    /// The number of the attempt under way, or of the last one.
    std::uint64_t attempt() const { return attempts; }

    /// Which connection this is: changes when the first session comes up or is replaced.
    std::uint64_t generation() const { return timesUp; }

    /// True if a question was open before this connection came up.
    bool neededTheUser() const { return connectionHadQuestion; }

    /// How often `end` was called: what was begun before the last time is not wanted any more.
    std::uint64_t endings() const { return timesEnded; }

    /// How long the last attempt was allowed to stay in the phase that it reached last.
    Duration limitOfPhase() const { return phaseLimit; }

private:
    enum class SessionState {
        down,
        up,
        refused ///< by the host, or not to be asked for
    };

    struct Request {
        bool isRepeatable = true;
        Time asked;
    };

    using Requests = std::map<std::uint64_t, Request>;

    void enter(Phase next, Time now);
    void enterWithin(Duration limit, Phase next, Time now);
    Orders begin(Way way, Time now);
    Orders endAttempt(Order::Why why, Phase next, Time now);
    void forgetSessions();
    Orders beginReplacing();
    Route routeOfWork(Choice choice, Busy const &busy) const;
    std::optional<Time> awaitedSince() const;
    std::optional<Time> silentAt() const;
    std::optional<Time> spareAt() const;

    SessionState &stateOf(Role role) { return sessions[static_cast<std::size_t>(role)]; }

    SessionState stateOf(Role role) const { return sessions[static_cast<std::size_t>(role)]; }

    Limits const limits;

    Phase phase = Phase::notTried;
    Time since;

    // Of the attempt under way.
    std::uint64_t attempts = 0;
    Way attemptWay = Way::quiet;
    std::size_t callers = 0;
    Time attemptBegan;
    Duration phaseLimit;
    std::optional<Time> deadline; ///< none while a question is open
    Duration remaining{};         ///< of the phase before the question, while one is open
    Phase beforeQuestion = Phase::loggingIn;
    int openQuestions = 0;
    bool attemptHadQuestion = false;

    // Of the connection.
    bool connectionHadQuestion = false;
    std::array<SessionState, 6> sessions = {};
    Requests inFlight;
    Time lastHeard;
    bool isSpareBegun = false;
    std::uint64_t replacing = 0; ///< the number of the attempt beside the silent connection; 0: none
    std::uint64_t lastReplacing = 0;
    std::optional<Time> replaceAgain;

    std::uint64_t timesUp = 0;
    std::uint64_t timesEnded = 0;
};

} // namespace tw
