#include "TWEngine/SSH/HostLife.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tw::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Choice = HostLife::Choice;
using OrderKind = HostLife::Order::Kind;
using Order = HostLife::Order;
using Orders = HostLife::Orders;
using Phase = HostStatus::Phase;
using Role = HostLife::Role;
using Route = HostLife::Route;
using Way = HostLife::Way;
using Why = HostLife::Order::Why;

Order begin(std::uint64_t number, Way way = Way::quiet)
{
    return {.kind = OrderKind::beginAttempt, .number = number, .way = way};
}

Order end(std::uint64_t number, Why why)
{
    return {.kind = OrderKind::endAttempt, .number = number, .why = why};
}

Order replacing(OrderKind kind, std::uint64_t number)
{
    return {.kind = kind, .number = number};
}

constexpr HostLife::Busy heldUp{.isFirstHeldUp = true};

/// A host, and a clock that the test moves.
class HostLifeTest : public testing::Test {
protected:
    Orders want(Way way = Way::quiet) { return life.want(way, now); }

    void comeUp()
    {
        want();
        life.attemptUp(life.attempt(), now);
    }

    void reach(ClientStage stage) { life.reached(life.attempt(), stage, now); }

    Orders ask(std::uint64_t request) { return life.asked(request, true, now); }

    /// Until the host counts as silent: a person waits for request 1.
    Orders fallSilent()
    {
        comeUp();
        ask(1);
        return after(5s);
    }

    /// What a tick brings after that time.
    Orders after(HostLife::Duration time)
    {
        now += time;
        return life.tick(now);
    }

    Phase phase() const { return life.status().phase; }

    static constexpr HostLife::Limits limits{};
    HostLife life{limits};
    HostLife::Time now = HostLife::Time() + 1000s;
};

// Attempts.

TEST_F(HostLifeTest, theFirstCallerBeginsAnAttemptAndTheOthersJoin)
{
    EXPECT_FALSE(life.wasWanted());
    EXPECT_THAT(want(), ElementsAre(begin(1)));
    EXPECT_EQ(phase(), Phase::reaching);
    EXPECT_THAT(want(), IsEmpty());
    EXPECT_EQ(life.attempt(), 1U);
}

TEST_F(HostLifeTest, anAttemptGoesThroughItsStages)
{
    want();
    reach(ClientStage::loggingIn);
    EXPECT_EQ(phase(), Phase::loggingIn);
    now += 3s;
    reach(ClientStage::waitingForShell);
    EXPECT_EQ(life.status(), (HostStatus{.phase = Phase::waitingForShell, .since = now}));
    life.attemptUp(1, now);
    EXPECT_EQ(phase(), Phase::up);
    EXPECT_EQ(life.generation(), 1U);
    EXPECT_THAT(want(), IsEmpty()) << "it is up";
}

struct Limit {
    Phase phase;
    ClientStage stage;
    HostLife::Duration time;
};

class HostLifeLimitTest : public HostLifeTest, public testing::WithParamInterface<Limit> {};

TEST_P(HostLifeLimitTest, aStageThatTakesTooLongEndsTheAttempt)
{
    want();
    reach(GetParam().stage);
    EXPECT_EQ(phase(), GetParam().phase);
    EXPECT_EQ(life.wakeAt(), now + GetParam().time);
    EXPECT_THAT(after(GetParam().time - 1ms), IsEmpty());
    EXPECT_THAT(after(1ms), ElementsAre(end(1, Why::noAnswer)));
    EXPECT_EQ(phase(), Phase::givenUp);
    EXPECT_EQ(life.wakeAt(), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Stages, HostLifeLimitTest,
    testing::Values(Limit{Phase::reaching, ClientStage::reaching, HostLife::Limits().reaching + HostLife::grace},
                    Limit{Phase::loggingIn, ClientStage::loggingIn, HostLife::Limits().loggingIn},
                    Limit{Phase::waitingForShell, ClientStage::waitingForShell, HostLife::Limits().waitingForShell}));

TEST_F(HostLifeTest, theUsersOwnLimitHoldsFromTheBeginningOfTheAttempt)
{
    want();
    now += 10ms;
    life.limitReaching(1, 3s);
    EXPECT_EQ(life.wakeAt(), now - 10ms + 3s + HostLife::grace);
    after(3s + HostLife::grace);
    EXPECT_EQ(life.limitOfPhase(), 3s);
    EXPECT_EQ(phase(), Phase::givenUp);
}

TEST_F(HostLifeTest, theLimitStandsStillWhileAQuestionIsOpen)
{
    want(Way::asking);
    reach(ClientStage::loggingIn);
    now += 20s;
    life.questionOpened(1, now);
    EXPECT_EQ(phase(), Phase::asking);
    EXPECT_THAT(after(24h), IsEmpty());
    life.questionClosed(1, now);
    EXPECT_EQ(phase(), Phase::loggingIn);
    EXPECT_EQ(life.wakeAt(), now + 40s);
}

TEST_F(HostLifeTest, aStageThatIsReachedDuringAQuestionShowsWhenTheQuestionCloses)
{
    want(Way::asking);
    life.questionOpened(1, now);
    reach(ClientStage::loggingIn);
    EXPECT_EQ(phase(), Phase::asking);
    life.questionClosed(1, now);
    EXPECT_EQ(phase(), Phase::loggingIn);
    EXPECT_EQ(life.wakeAt(), now + HostLife::Limits().loggingIn);
}

TEST_F(HostLifeTest, itIsKnownWhetherTheConnectionInUseNeededTheUser)
{
    want(Way::asking);
    life.questionOpened(1, now);
    life.questionClosed(1, now);
    EXPECT_FALSE(life.neededTheUser()) << "nothing is in use yet";
    life.attemptUp(1, now);
    EXPECT_TRUE(life.neededTheUser());

    life.end(now);
    want(Way::asking);
    life.attemptUp(2, now);
    EXPECT_FALSE(life.neededTheUser());
}

TEST_F(HostLifeTest, anAttemptEndsWhenNobodyWaitsForItAnyMore)
{
    want();
    want();
    EXPECT_THAT(life.leave(1, now), IsEmpty());
    EXPECT_THAT(life.leave(1, now), ElementsAre(end(1, Why::nobodyWaits)));
    EXPECT_EQ(phase(), Phase::givenUp);
    EXPECT_THAT(life.leave(1, now), IsEmpty()) << "it has ended";
    EXPECT_THAT(want(), ElementsAre(begin(2)));
}

TEST_F(HostLifeTest, anAttemptThatMayAskTheUserSupersedesOneThatMayNot)
{
    want();
    EXPECT_THAT(want(Way::asking), ElementsAre(end(1, Why::superseded), begin(2, Way::asking)));
    EXPECT_THAT(want(), IsEmpty()) << "who may not ask joins it";
}

TEST_F(HostLifeTest, afterAFailureTheNextCallerTriesAgain)
{
    want();
    life.attemptFailed(1, now);
    EXPECT_EQ(phase(), Phase::givenUp);
    EXPECT_THAT(want(), ElementsAre(begin(2)));
}

TEST_F(HostLifeTest, whatComesFromAnAttemptThatHasEndedHasNoEffect)
{
    want();
    life.leave(1, now);
    reach(ClientStage::loggingIn);
    life.questionOpened(1, now);
    life.limitReaching(1, 3s);
    life.attemptUp(1, now);
    EXPECT_EQ(phase(), Phase::givenUp);
    want();
    life.attemptFailed(1, now);
    EXPECT_EQ(phase(), Phase::reaching);
}

// Sessions.

TEST_F(HostLifeTest, eachKindOfRequestHasItsSession)
{
    comeUp();
    EXPECT_EQ(life.route(Choice::interactive, {}), (Route{Role::first, true}));
    EXPECT_EQ(life.route(Choice::background, {}), (Route{Role::background, false}));
    EXPECT_EQ(life.route(Choice::backgroundIfReady, {}), (Route{Role::background, false}));
    EXPECT_EQ(life.route(Choice::work, {}), (Route{Role::work, false}));
    life.sessionUp(Role::work);
    EXPECT_EQ(life.route(Choice::work, {}), (Route{Role::work, true}));
}

TEST_F(HostLifeTest, aHostThatRefusesASessionServesItsRequestsOverTheFirst)
{
    comeUp();
    for (auto const role : {Role::background, Role::work, Role::spare})
        life.sessionRefused(role);
    EXPECT_EQ(life.route(Choice::interactive, heldUp), (Route{Role::first, true}));
    EXPECT_EQ(life.route(Choice::backgroundIfReady, {}), (Route{Role::first, true}));
    EXPECT_EQ(life.route(Choice::work, {}), (Route{Role::first, true}));
    EXPECT_EQ(life.route(Choice::background, {}), (Route{Role::background, true})) << "and fails there";
}

// The load of the sessions for work.

constexpr HostLife::Load oneShort{.requests = 1};
constexpr HostLife::Load oneLong{.requests = 1, .longOnes = 1};

TEST_F(HostLifeTest, workFindsASessionThatIsIdle)
{
    comeUp();
    for (auto const role : HostLife::workRoles)
        life.sessionUp(role);
    EXPECT_EQ(life.route(Choice::work, {}), (Route{Role::work, true})) << "always the same, which is warm";
    EXPECT_EQ(life.route(Choice::work, {.work = {oneLong}}), (Route{Role::secondWork, true}));
    EXPECT_EQ(life.route(Choice::longWork, {.work = {oneShort, oneLong}}), (Route{Role::thirdWork, true}));
}

TEST_F(HostLifeTest, anotherWorkSessionIsConnectedWhenAllAreBusy)
{
    comeUp();
    life.sessionUp(Role::work);
    EXPECT_EQ(life.route(Choice::work, {}), (Route{Role::work, true}));
    EXPECT_EQ(life.route(Choice::work, {.work = {oneShort}}), (Route{Role::secondWork, false}));
    EXPECT_EQ(life.route(Choice::longWork, {.work = {oneLong}}), (Route{Role::secondWork, false}));
}

TEST_F(HostLifeTest, whereAllAreBusyWorkGoesToTheOneThatIsLeastSo)
{
    comeUp();
    for (auto const role : HostLife::workRoles)
        life.sessionUp(role);
    EXPECT_EQ(life.route(Choice::work, {.work = {oneLong, {.requests = 3}, oneLong}}), (Route{Role::secondWork, true}));
    EXPECT_EQ(life.route(Choice::work, {.work = {HostLife::Load{.requests = 2}, oneShort, oneShort}}),
              (Route{Role::secondWork, true}));
    EXPECT_EQ(life.route(Choice::longWork, {.work = {oneShort, oneLong, oneShort}}), (Route{Role::work, true}));
}

TEST_F(HostLifeTest, longWorkLeavesOneSessionToTheOther)
{
    comeUp();
    EXPECT_TRUE(life.route(Choice::longWork, {.work = {oneLong, oneLong}}).hasToWait);
    for (auto const role : HostLife::workRoles)
        life.sessionUp(role);
    EXPECT_TRUE(life.route(Choice::longWork, {.work = {oneLong, {}, oneLong}}).hasToWait);
    EXPECT_EQ(life.route(Choice::work, {.work = {oneLong, {}, oneLong}}), (Route{Role::secondWork, true}));
}

TEST_F(HostLifeTest, aHostThatRefusesAWorkSessionDoesItsWorkInThoseThatThereAre)
{
    comeUp();
    life.sessionUp(Role::work);
    life.sessionRefused(Role::secondWork);
    EXPECT_EQ(life.route(Choice::work, {.work = {oneLong}}), (Route{Role::work, true}));
    EXPECT_TRUE(life.route(Choice::longWork, {.work = {oneLong}}).hasToWait);
    EXPECT_EQ(life.route(Choice::longWork, {.work = {oneShort}}), (Route{Role::work, true}));
}

TEST_F(HostLifeTest, aConnectionOfTheUserHasTwoSessionsForWorkUntilOneOfOursReplacesIt)
{
    auto const bringUpTwo = [&] {
        life.sessionUp(Role::work);
        life.sessionUp(Role::secondWork);
    };
    want();
    life.attemptUp(1, now, RemoteShellOptions::Sharing::users);
    bringUpTwo();
    EXPECT_TRUE(life.route(Choice::longWork, {.work = {oneLong}}).hasToWait);
    EXPECT_EQ(life.route(Choice::work, {.work = {oneLong, oneShort}}), (Route{Role::secondWork, true}));
    ask(1);
    after(5s);
    life.replacementUp(1, now);
    bringUpTwo();
    EXPECT_EQ(life.route(Choice::work, {.work = {oneLong, oneShort}}), (Route{Role::thirdWork, false}));
}

TEST_F(HostLifeTest, aNewConnectionKnowsNothingOfTheSessionsBefore)
{
    comeUp();
    life.sessionRefused(Role::work);
    life.sessionLost(Role::first, 1, now);
    comeUp();
    EXPECT_EQ(life.route(Choice::work, {}), (Route{Role::work, false}));
}

TEST_F(HostLifeTest, theLossOfTheFirstSessionIsThatOfTheHost)
{
    comeUp();
    life.sessionLost(Role::work, 1, now);
    EXPECT_EQ(phase(), Phase::up);
    EXPECT_EQ(life.route(Choice::work, {}), (Route{Role::work, false}));
    life.sessionLost(Role::first, 1, now);
    EXPECT_EQ(phase(), Phase::lost);
    EXPECT_THAT(want(), ElementsAre(begin(2)));
}

TEST_F(HostLifeTest, aCutThatTheBackgroundSessionNoticesFirstIsRepairedOnceForBoth)
{
    comeUp();
    life.sessionUp(Role::background);
    life.sessionLost(Role::background, 1, now);
    EXPECT_EQ(phase(), Phase::lost);
    EXPECT_THAT(want(), ElementsAre(begin(2)));
    life.sessionLost(Role::first, 1, now);
    EXPECT_EQ(phase(), Phase::reaching);
}

TEST_F(HostLifeTest, aBackgroundSessionThatEndsBeforeItIsUpIsNoLossOfTheHost)
{
    comeUp();
    life.sessionLost(Role::background, 1, now);
    EXPECT_EQ(phase(), Phase::up);
    life.sessionRefused(Role::background);
    life.sessionLost(Role::background, 1, now);
    EXPECT_EQ(phase(), Phase::up);
}

TEST_F(HostLifeTest, aLossThatIsLearntOfLateIsNotThatOfTheNextConnection)
{
    comeUp();
    life.sessionLost(Role::first, 1, now);
    comeUp();
    life.sessionLost(Role::first, 1, now);
    EXPECT_EQ(phase(), Phase::up);
}

TEST_F(HostLifeTest, behindAListingThatNobodyWaitsForTheSpareSessionIsUsed)
{
    comeUp();
    EXPECT_EQ(life.route(Choice::interactive, heldUp), (Route{Role::spare, false}));
    life.sessionUp(Role::spare);
    EXPECT_EQ(life.route(Choice::interactive, heldUp), (Route{Role::spare, true}));
    life.spareTookOver();
    EXPECT_EQ(life.route(Choice::interactive, {}), (Route{Role::first, true}));
    EXPECT_EQ(life.route(Choice::interactive, heldUp), (Route{Role::spare, false}));
    life.sessionLost(Role::first, 1, now);
    EXPECT_EQ(phase(), Phase::up) << "the old session has ended, not the new one";
}

TEST_F(HostLifeTest, aSessionWithAChangingCommandIsNotEndedForAnotherRequest)
{
    comeUp();
    life.asked(1, false, now);
    EXPECT_EQ(life.route(Choice::interactive, heldUp), (Route{Role::first, true}));
    life.settled(1);
    EXPECT_EQ(life.route(Choice::interactive, heldUp).role, Role::spare);
}

TEST_F(HostLifeTest, theSpareSessionBeginsWhenAnAnswerIsLate)
{
    comeUp();
    ask(1);
    EXPECT_EQ(life.wakeAt(), now + HostLife::lateAnswer);
    EXPECT_THAT(after(399ms), IsEmpty());
    EXPECT_THAT(after(1ms), ElementsAre(Order{.kind = OrderKind::beginSpare}));
    EXPECT_THAT(after(1s), IsEmpty()) << "once";
}

TEST_F(HostLifeTest, anAnswerInTimeBeginsNothing)
{
    comeUp();
    ask(1);
    life.settled(1);
    EXPECT_EQ(life.wakeAt(), std::nullopt);
    EXPECT_THAT(after(1h), IsEmpty());
}

// Silence.

TEST_F(HostLifeTest, aHostThatSendsNothingWhileAPersonWaitsIsSilentAndIsConnectedBeside)
{
    comeUp();
    ask(1);
    auto const asked = now;
    after(400ms);
    EXPECT_EQ(life.wakeAt(), asked + HostLife::silenceLimit);
    EXPECT_THAT(after(4600ms), ElementsAre(replacing(OrderKind::beginReplacing, 1)));
    EXPECT_EQ(life.status(), (HostStatus{.phase = Phase::silent, .since = asked}));
    EXPECT_TRUE(life.isUp()) << "requests still go over it";
}

TEST_F(HostLifeTest, whatComesInPiecesIsNotSilent)
{
    comeUp();
    ask(1);
    after(4s);
    life.heard(now);
    EXPECT_THAT(after(4s), IsEmpty());
    EXPECT_EQ(phase(), Phase::up);
}

TEST_F(HostLifeTest, aHostThatNobodyAsksIsNotSilent)
{
    comeUp();
    EXPECT_THAT(after(1h), IsEmpty());
    ask(1);
    EXPECT_EQ(life.wakeAt(), now + HostLife::lateAnswer);
    EXPECT_THAT(after(1s), ElementsAre(Order{.kind = OrderKind::beginSpare})) << "the hour before does not count";
}

TEST_F(HostLifeTest, aSilentHostThatAnswersIsUp)
{
    fallSilent();
    EXPECT_THAT(life.heard(now), ElementsAre(replacing(OrderKind::endReplacing, 1)));
    EXPECT_EQ(phase(), Phase::up);
    EXPECT_THAT(life.replacementUp(1, now), IsEmpty()) << "too late";
    EXPECT_EQ(life.generation(), 1U);
}

TEST_F(HostLifeTest, theNewConnectionTakesThePlaceOfTheSilentOne)
{
    fallSilent();
    EXPECT_THAT(life.replacementUp(1, now), ElementsAre(replacing(OrderKind::replace, 1)));
    EXPECT_EQ(phase(), Phase::up);
    EXPECT_EQ(life.generation(), 2U);
    EXPECT_EQ(life.route(Choice::work, {}), (Route{Role::work, false}));
}

TEST_F(HostLifeTest, aConnectionBesideThatFailsIsTriedAgainAsLongAsSomebodyWaits)
{
    fallSilent();
    life.replacementFailed(1, now);
    EXPECT_EQ(life.wakeAt(), now + HostLife::silenceLimit);
    EXPECT_THAT(after(HostLife::silenceLimit), ElementsAre(replacing(OrderKind::beginReplacing, 2)));
    life.replacementFailed(2, now);
    life.settled(1);
    EXPECT_EQ(life.wakeAt(), std::nullopt);
    EXPECT_THAT(after(1h), IsEmpty());
    EXPECT_THAT(ask(2), ElementsAre(replacing(OrderKind::beginReplacing, 3)))
        << "the next who asks does not wait for it";
}

TEST_F(HostLifeTest, aSilentHostThatIsLostEndsTheConnectionBeside)
{
    fallSilent();
    EXPECT_THAT(life.sessionLost(Role::first, 1, now), ElementsAre(replacing(OrderKind::endReplacing, 1)));
    EXPECT_EQ(phase(), Phase::lost);
}

// The end.

TEST_F(HostLifeTest, theEndEndsWhatIsUnderWay)
{
    want();
    EXPECT_THAT(life.end(now), ElementsAre(end(1, Why::ended)));
    EXPECT_EQ(phase(), Phase::notTried);
    comeUp();
    EXPECT_THAT(life.end(now), IsEmpty());
    EXPECT_EQ(life.endings(), 2U);
    EXPECT_FALSE(life.isUp());
    fallSilent();
    EXPECT_THAT(life.end(now), ElementsAre(replacing(OrderKind::endReplacing, 1)));
}

} // namespace
} // namespace tw::test
