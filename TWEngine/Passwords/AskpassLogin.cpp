#include "TWEngine/Passwords/AskpassLogin.h"

#include "TWCore/Async/ChildTask.h"
#include "TWEngine/Passwords/AskpassRequest.h"
#include "TWEngine/Passwords/LoginPrompt.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/PipeError.h"
#include "TWEngine/Runtime/TimeOut.h"

#include <utility>

#include <unistd.h>

namespace tw {

namespace {

using Line = std::shared_ptr<ChildPipe>;

/// ssh asks one question at a time; a note to touch a key may stand beside it.
constexpr int mostCallers = 4;

/// The askpass program sends its request at once.
constexpr std::chrono::seconds requestLimit{10};

/// What the key store has for a question.
struct Kept {
    std::optional<SecretText> text;
    bool canSave = false;
};

Kept lookUp(LoginKeyStore const &store, std::string const &account, bool isFirst)
{
    Kept kept;
    if (isFirst && store.read)
        kept.text = store.read(account);
    kept.canSave = store.isOpen && store.isOpen();
    return kept;
}

Task<std::optional<AskpassRequest>> requestOn(Line line)
{
    std::string received;
    std::string piece;
    for (;;) {
        piece = co_await line->read(std::move(piece));
        received += piece;
        if (piece.empty() || received.size() > AskpassRequest::longest)
            co_return std::nullopt;
        if (auto request = AskpassRequest::decoded(received))
            co_return request;
    }
}

/// The answer leaves no copy in memory that we could reach.
Task<void> sendOn(Line line, SecretText answer)
{
    // Too long to lie in the object itself, which leaves a copy wherever it was.
    constexpr std::size_t onHeap = 64;
    std::string bytes;
    bytes.reserve(answer.text().size() + onHeap);
    bytes = answer.text().substr(0, answer.text().find('\n'));
    bytes += '\n';
    bytes = co_await line->write(std::move(bytes));
    ::explicit_bzero(bytes.data(), bytes.size());
}

/// Returns when the caller is gone. What it still sends is dropped.
Task<void> untilEndOf(Line line)
{
    std::string dropped;
    do
        dropped = co_await line->read(std::move(dropped));
    while (!dropped.empty());
}

Task<void> stopAtEndOf(Line line, std::shared_ptr<std::stop_source> work)
{
    co_await outcomeOf(untilEndOf(line));
    work->request_stop();
}

/// Is called with everything on the main context.
Task<std::optional<LoginAnswer>> promptHere(std::shared_ptr<LoginPrompter> prompter, LoginQuestion question)
{
    auto answer = co_await prompter->ask(std::move(question));
    co_return answer;
}

} // namespace

AskpassLogin::AskpassLogin(Collaborators collaborators, std::string host, std::string secret, Environment environment)
    : with(std::move(collaborators)),
      token(std::move(secret)),
      variables(std::move(environment)),
      dialogue(std::move(host))
{
}

void AskpassLogin::start()
{
    spawn({with.strand.executor(), over.get_token()}, listen(shared_from_this()));
}

void AskpassLogin::end()
{
    over.request_stop();
    with.listener->close();
}

void AskpassLogin::succeed()
{
    spawn({with.strand.executor(), {}}, store(shared_from_this()));
}

Task<void> AskpassLogin::store(Self self)
{
    auto remembered = self->dialogue.takeRemembered();
    if (remembered.empty() || !self->with.keyStore.save)
        co_return;
    auto const texts = std::make_shared<LoginDialogue::Remembered>(std::move(remembered));
    co_await self->with.engine.workers().run(WorkPriority::background, [texts, save = self->with.keyStore.save] {
        for (auto const &[account, text] : *texts)
            save(text.text(), account);
    });
}

Task<void> AskpassLogin::listen(Self self)
{
    auto const context = co_await currentContext();
    try {
        for (;;) {
            auto caller = co_await self->with.listener->accept();
            auto const asker = self->askerOf(caller);
            if (!asker || self->callers >= mostCallers)
                continue; // closes the connection
            ++self->callers;
            auto const line = std::make_shared<ChildPipe>(self->with.engine.io(), std::move(caller.connection));
            spawn(context, serve(self, line, *asker));
        }
    } catch (PipeError const &) {
        // Closed by `end`, or no descriptors are left: ssh gets no answer and the login fails.
    }
}

std::optional<AskpassLogin::Asker> AskpassLogin::askerOf(LocalListener::Caller const &caller) const
{
    if (caller.user != ::getuid())
        return std::nullopt;
    switch (with.callerOf(caller.process)) {
    case AskpassGuard::Caller::stranger:
        return std::nullopt;
    case AskpassGuard::Caller::host:
        return Asker::host;
    case AskpassGuard::Caller::jumpHost:
        return Asker::hostInBetween;
    }
    std::unreachable();
}

Task<void> AskpassLogin::serve(Self self, Line line, Asker asker)
{
    try {
        auto const request = co_await withTimeOut(self->with.engine.clock(), requestLimit, requestOn(line));
        if (request && request->token == self->token) {
            auto answer = co_await answerOf(self, line, LoginPrompt::read(request->prompt, request->hint), asker);
            if (answer)
                co_await sendOn(line, std::move(answer->text));
            else
                co_await untilEndOf(line);
        }
    } catch (PipeError const &) {
        // The caller is gone.
    } catch (TimedOut const &) {
        // It is no askpass program.
    } catch (Cancelled const &) {
        // The login is over.
    }
    --self->callers;
}

/// Nothing if there is none: the caller is left without an answer until the login ends, since ssh would take the end of
/// its askpass program for an empty password and send that to the host.
Task<std::optional<LoginAnswer>> AskpassLogin::answerOf(Self self, Line line, LoginQuestion question, Asker asker)
{
    auto asked = self->dialogue.ask(std::move(question), asker);
    if (!asked || self->isRefused) {
        self->refuse(LoginDesk::Refusal::byHost);
        co_return std::nullopt;
    }
    if (asked->canBeRemembered) {
        auto kept = co_await self->with.engine.workers().run(
            WorkPriority::interactive, [store = self->with.keyStore, account = LoginDialogue::accountOf(*asked),
                                        isFirst = asked->attempt == 1] { return lookUp(store, account, isFirst); });
        asked->canBeRemembered = kept.canSave;
        if (kept.text) {
            LoginAnswer saved{.text = std::move(*kept.text)};
            self->dialogue.answer(*asked, asker, saved);
            co_return saved;
        }
    }
    auto answer = co_await askUser(self, line, *asked);
    if (!answer || answer->text.text().empty()) {
        self->refuse(LoginDesk::Refusal::byUser);
        co_return std::nullopt;
    }
    self->dialogue.answer(*asked, asker, *answer);
    co_return answer;
}

Task<std::optional<LoginAnswer>> AskpassLogin::askUser(Self self, Line line, LoginQuestion question)
{
    auto const context = co_await currentContext();
    auto const asking = std::make_shared<std::stop_source>();
    std::stop_callback const passOn(context.stop, [asking] { asking->request_stop(); });
    auto const watch = ChildTask<void>::start(context, stopAtEndOf(line, asking));
    if (self->openQuestions++ == 0 && self->with.reports.questionOpened)
        self->with.reports.questionOpened();
    auto outcome =
        co_await outcomeOf(onExecutor(self->with.mainContext, promptHere(self->with.prompter, std::move(question)))
                               .withStop(asking->get_token()));
    if (--self->openQuestions == 0 && self->with.reports.questionClosed)
        self->with.reports.questionClosed();
    auto const isCalledOff = asking->stop_requested();
    watch.stop();
    co_await outcomeOf(watch.join());
    if (isCalledOff)
        throw Cancelled();
    try {
        co_return outcome.take();
    } catch (Cancelled const &) {
        co_return std::nullopt; // the window has closed
    }
}

void AskpassLogin::refuse(LoginDesk::Refusal why)
{
    if (!std::exchange(isRefused, true) && with.reports.refused)
        with.reports.refused(why);
}

} // namespace tw
