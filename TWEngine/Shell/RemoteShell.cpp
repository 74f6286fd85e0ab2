#include "TWEngine/Shell/RemoteShell.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Check.h"
#include "TWCore/Model/DisplayText.h"
#include "TWEngine/Platform/RandomDigits.h"
#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Shell/LastWords.h"
#include "TWEngine/Shell/OtherShell.h"
#include "TWEngine/Shell/ResidentScript.h"
#include "TWEngine/Shell/ShellAnswer.h"
#include "TWEngine/Shell/ShellClient.h"

#include <array>
#include <cstdio>
#include <limits>

namespace tw {

namespace {

/// Random: the nonce tells data from the end of data.
constexpr std::size_t nonceBytes = 8;

ChildCommand withPipes(ChildCommand command)
{
    command.input = PipeEnd{};
    command.output = PipeEnd{};
    command.error = PipeEnd{};
    return command;
}

} // namespace

RemoteShell::RemoteShell(Collaborators with, std::string toHost, RemoteShellOptions settings, ShellDialect speaks)
    : strand(std::move(with.strand)),
      io(with.io),
      clock(std::move(with.clock)),
      client(withPipes(std::move(with.client))),
      host(std::move(toHost)),
      options(std::move(settings)),
      dialect(speaks),
      words(std::move(with.words)),
      events(std::move(with.events)),
      nonce(randomDigits(nonceBytes))
{
}

RemoteShell::~RemoteShell()
{
    if (session)
        session->end();
}

Task<void> RemoteShell::connect()
{
    return onStrand(strand, connectHere(shared_from_this()));
}

Task<void> RemoteShell::connectHere(std::shared_ptr<RemoteShell> self)
{
    auto isBash = co_await attempt(self);
    if (!isBash)
        isBash = co_await attempt(self);
    if (!isBash)
        throw RemoteShellError::ConnectFailed(self->host, OtherShell::failure, self->lastReport);
}

Task<bool> RemoteShell::attempt(std::shared_ptr<RemoteShell> self)
{
    if (self->connected)
        co_return true;
    auto const context = co_await currentContext();
    if (context.stop.stop_requested())
        throw Cancelled();
    self->teardown(std::nullopt);
    self->unexpectedOutput.clear();
    self->lastReport = {};
    if (self->dialect == ShellDialect::powershell)
        throw RemoteShellError::ConnectFailed(self->host, "this version speaks to hosts with a POSIX shell only");
    self->startSession();
    auto const session = self->session;

    std::string detail;
    try {
        auto const isBash = co_await greet(self, session);
        if (self->session == session) {
            self->connected = isBash;
            self->hasOtherShell = self->hasOtherShell || !isBash;
            if (self->options.controlPath)
                session->keepHelpers();
            if (!isBash)
                self->teardown("shut down");
            co_return isBash;
        }
        throw RemoteShellError::Disconnected(self->disconnectReason.value_or("connection closed"));
    } catch (RemoteShellError::TimedOut const &late) {
        detail = "no response within " + std::to_string(static_cast<int>(late.limit.count())) + "s";
    } catch (RemoteShellError const &failure) {
        detail = failure.plainText();
    } catch (Cancelled const &) {
        close(self, session);
        throw;
    }
    // ssh itself reports a refused key, an unknown host or a name that does not resolve.
    auto const report = session->report();
    if (!report.words.empty())
        detail = report.words;
    self->unexpectedOutput = session->unframedOutput();
    if (self->session == session)
        self->teardown("shut down");
    throw RemoteShellError::ConnectFailed(self->host, detail, report);
}

Task<bool> RemoteShell::greet(std::shared_ptr<RemoteShell> self, std::shared_ptr<ShellClient> session)
{
    if (self->hasOtherShell) {
        auto const gone = self->expect(0);
        session->write(OtherShell::replacement(self->nonce));
        co_await awaitHandshake(self, gone);
    }
    auto const answer = self->expect(0);
    session->write(OtherShell::question(self->nonce) +
                   ResidentScript::posix(self->nonce, self->options.maxResponseBytes) +
                   std::string(lineTerminator(self->dialect)));
    auto const status = co_await awaitHandshake(self, answer);
    co_return status != OtherShell::isThere;
}

Task<std::int32_t> RemoteShell::awaitHandshake(std::shared_ptr<RemoteShell> self, Answer answer)
{
    auto const limit = self->options.connectTimeout;
    auto const context = co_await currentContext();
    // There is nobody to wait for behind a handshake that does not come, or that is not wanted any more: the session is
    // ended, and with it the wait.
    std::stop_source inTime;
    spawn({self->strand.executor(), inTime.get_token()}, closeSlow(self, self->session, limit));
    std::stop_callback const giveUp(context.stop, [executor = context.executor, weak = std::weak_ptr(self),
                                                   session = std::weak_ptr(self->session)] {
        executor->post([weak, session] { close(weak, session.lock()); });
    });
    auto outcome = co_await outcomeOf(answerWithin(self->clock, answer, limit));
    inTime.request_stop();
    if (context.stop.stop_requested())
        throw Cancelled();
    auto const response = outcome.take();
    if (response.status != 0 && response.status != OtherShell::isThere && response.status != OtherShell::isGone)
        throw RemoteShellError::ConnectFailed(self->host, "remote handshake status " + std::to_string(response.status));
    co_return response.status;
}

Task<void> RemoteShell::closeSlow(std::weak_ptr<RemoteShell> weak, std::shared_ptr<ShellClient> session, Seconds limit)
{
    auto self = weak.lock();
    if (!self)
        co_return;
    auto const clock = self->clock;
    self.reset();
    co_await clock->sleep(std::chrono::duration_cast<std::chrono::nanoseconds>(limit));
    close(weak, session);
}

void RemoteShell::close(std::weak_ptr<RemoteShell> const &weak, std::shared_ptr<ShellClient> const &session)
{
    auto const self = weak.lock();
    if (self && session && self->session == session)
        self->teardown("shut down");
}

void RemoteShell::startSession()
{
    auto child = ChildProcess::start(io, client);
    if (!child)
        throw RemoteShellError::ConnectFailed(host, "could not launch ssh: " + child.error().reason());
    session = std::make_shared<ShellClient>(strand, *std::move(child), ShellReader(nonce, options.maxResponseBytes),
                                            newWords());
    spawn({strand.executor(), session->stopToken()}, listen(weak_from_this(), session, clock));
}

std::unique_ptr<ClientWords> RemoteShell::newWords()
{
    if (!words)
        return std::make_unique<LastWords>();
    return words([weak = weak_from_this()](ClientStage stage) {
        auto const self = weak.lock();
        if (self && self->events.onStage)
            self->events.onStage(stage);
    });
}

Task<void> RemoteShell::listen(std::weak_ptr<RemoteShell> weak, std::shared_ptr<ShellClient> session,
                               std::shared_ptr<Clock> clock)
{
    auto const take = [weak, from = session.get()](std::vector<ShellReader::Frame> frames) {
        auto const self = weak.lock();
        if (!self || self->session.get() != from)
            return false;
        if (self->events.onHeard)
            self->events.onHeard();
        for (auto &frame : frames)
            self->deliver(std::move(frame));
        self->advancePaced();
        return true;
    };
    auto const detail = co_await session->listen(std::move(clock), take);
    if (auto const self = weak.lock())
        self->handleClosed(session.get(), detail);
}

void RemoteShell::deliver(ShellReader::Frame frame)
{
    if (frame.id == 0)
        handshake.take(frame.payload);
    noteOther(frame);
    auto const waiting = pending.find(frame.id);
    if (waiting == pending.end())
        return;
    auto const answer = waiting->second;
    pending.erase(waiting);
    left.erase(frame.id);
    // A file's bytes would be moved by one.
    if (frame.beginsWithLateLineFeed)
        frame.payload.erase(0, 1);
    answer->succeed({.bytes = std::move(frame.payload), .status = frame.status, .truncated = frame.truncated});
}

void RemoteShell::handleClosed(ShellClient const *closed, std::string const &reason)
{
    if (session.get() != closed)
        return;
    auto const detail = reason.empty() ? "connection closed" : reason;
    connected = false;
    disconnectReason = detail;
    failPending(detail);
    if (events.onLost)
        events.onLost();
}

void RemoteShell::teardown(std::optional<std::string> const &reason)
{
    connected = false;
    if (reason)
        disconnectReason = reason;
    if (auto const ended = std::exchange(session, nullptr)) {
        lastReport = ended->report();
        ended->end();
    }
    failPending(reason.value_or("connection closed"));
}

void RemoteShell::failPending(std::string const &detail)
{
    left.clear();
    for (auto const &[id, answer] : std::exchange(pending, {}))
        answer->fail(std::make_exception_ptr(RemoteShellError::Disconnected(detail)));
}

RemoteShell::Answer RemoteShell::expect(std::uint64_t id)
{
    return pending.insert_or_assign(id, std::make_shared<Completion<ListingResponse>>()).first->second;
}

Task<ListingResponse> RemoteShell::answerWithin(std::shared_ptr<Clock> clock, Answer answer, Seconds limit)
{
    auto const started = clock->steadyNow();
    auto outcome = co_await outcomeOf(Completion<ListingResponse>::wait(answer).withStop({}));
    if (clock->steadyNow() - started >= limit)
        throw RemoteShellError::TimedOut(limit);
    co_return outcome.take();
}

Task<ListingResponse> RemoteShell::request(std::shared_ptr<RemoteShell> self, ShellRequest request, Seconds limit)
{
    if (self->paced)
        co_await turn(self);
    if (!self->connected)
        throw RemoteShellError::NotConnected();
    auto const id = self->nextRequestID++;
    auto const answer = self->expect(id);
    self->session->write(request.numbered(id));
    auto response = co_await answerWithin(self->clock, answer, limit);
    co_return response;
}

Task<ListingResponse> RemoteShell::ask(ShellRequest what, Seconds limit)
{
    return onStrand(strand, request(shared_from_this(), std::move(what), limit));
}

Task<std::int64_t> RemoteShell::fileSize(std::string path)
{
    static constexpr auto sizeIn = [](Task<ListingResponse> asked) -> Task<std::int64_t> {
        auto const response = co_await std::move(asked);
        co_return ShellAnswer::fileSize(response.bytes);
    };
    return sizeIn(ask(ShellRequest::size(dialect, path), options.requestTimeout));
}

Task<CommandResult> RemoteShell::run(std::string command, std::optional<Seconds> limit, CommandEffect effect)
{
    static constexpr auto resultIn = [](Task<ListingResponse> asked) -> Task<CommandResult> {
        auto const response = co_await std::move(asked);
        co_return CommandResult{.output = repaired(response.bytes), .status = response.status};
    };
    constexpr Seconds noLimit(std::numeric_limits<double>::infinity());
    auto const allowed = effect == CommandEffect::changes ? noLimit : limit.value_or(options.requestTimeout);
    return resultIn(ask(ShellRequest::run(dialect, command), allowed));
}

Task<std::string> RemoteShell::readChunk(std::string path, std::int64_t offset, std::size_t length)
{
    static constexpr auto bytesIn = [](ShellDialect dialect, std::size_t asked,
                                       Task<ListingResponse> answering) -> Task<std::string> {
        auto response = co_await std::move(answering);
        auto bytes = ShellAnswer::fileBytes(dialect, std::move(response.bytes));
        // Nobody is prepared for more than was asked for.
        bytes.resize(std::min(bytes.size(), asked));
        co_return bytes;
    };
    return bytesIn(dialect, length, ask(ShellRequest::read(dialect, path, offset, length), options.requestTimeout));
}

Task<void> RemoteShell::shutdown()
{
    return onStrand(strand, shutdownHere(shared_from_this()));
}

Task<void> RemoteShell::shutdownHere(std::shared_ptr<RemoteShell> self)
{
    auto const ended = self->session;
    self->teardown("shut down");
    if (!ended)
        co_return;
    // A program that quits must leave no client behind. A client that does not end in time is killed.
    co_await ended->endSurely(self->clock);
}

Task<RemoteShell::State> RemoteShell::state()
{
    return onStrand(strand, stateHere(shared_from_this()));
}

Task<RemoteShell::State> RemoteShell::stateHere(std::shared_ptr<RemoteShell> self)
{
    co_return State{self->connected,        self->handshake, self->disconnectReason,
                    self->unexpectedOutput, self->report(),  self->isHeldUp()};
}

ClientReport RemoteShell::report() const
{
    return session ? session->report() : lastReport;
}

} // namespace tw
