#include "TWEngine/Transfer/TransferChild.h"

#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Runtime/TimeOut.h"

#include <csignal>

namespace tw {

namespace {

/// What a program has left running may keep its standard error open.
constexpr std::chrono::seconds patienceWithWords{2};

constexpr std::chrono::milliseconds patienceAfterRequest{50};

/// A killed program ends at once, unless it is in a call of the system that nothing interrupts.
constexpr std::chrono::seconds patienceAfterKill{1};

} // namespace

TransferChild::TransferChild(EngineRuntime &runtime, std::shared_ptr<ChildProcess> started)
    : engine(runtime), child(std::move(started))
{
}

Task<TransferChild::Shared> TransferChild::start(EngineRuntime &engine, ChildCommand command, AtFirstLine atFirstLine)
{
    struct Starting {
        static Task<Shared> run(EngineRuntime *engine, ChildCommand command, AtFirstLine atFirstLine)
        {
            auto const started = ChildProcess::start(engine->io(), command);
            if (!started)
                throw started.error();
            auto const self = std::make_shared<TransferChild>(*engine, *started);
            auto const context = co_await currentContext();
            self->hearing.emplace(ChildTask<void>::start({context.executor, {}}, hear(self, atFirstLine)));
            co_return self;
        }
    };

    return Starting::run(&engine, std::move(command), atFirstLine);
}

Task<void> TransferChild::hear(Shared self, AtFirstLine atFirstLine)
{
    // Only the pipe is held: the words go with the child.
    auto const child = self->child;
    std::weak_ptr const words = std::exchange(self, nullptr);
    std::string buffer;
    for (;;) {
        buffer = co_await child->read(ChildOutput::error, std::move(buffer));
        auto const listener = words.lock();
        if (buffer.empty() || !listener)
            co_return;
        listener->kept.hear(buffer);
        // cp writes a line in pieces, and the first of them is its own name.
        if (atFirstLine == AtFirstLine::end && buffer.contains('\n'))
            child->terminate();
    }
}

Task<ExitStatus> TransferChild::end(Shared self)
{
    auto const status = co_await self->child->wait();
    if (self->hearing) {
        auto const hearing = std::exchange(self->hearing, std::nullopt);
        co_await outcomeOf(withTimeOut(self->engine.clock(), patienceWithWords, hearing->join()));
    }
    co_return status;
}

Task<ExitStatus> TransferChild::endSoon(Shared self, std::chrono::milliseconds patience)
{
    auto const clock = self->engine.clock();
    co_await outcomeOf(withTimeOut(clock, patience, self->child->wait()).withStop({}));
    self->child->terminate();
    co_await outcomeOf(withTimeOut(clock, patienceAfterRequest, self->child->wait()).withStop({}));
    self->child->kill();
    auto const status = co_await outcomeOf(withTimeOut(clock, patienceAfterKill, self->child->wait()).withStop({}));
    co_return status.value.value_or(ExitStatus{.cause = ExitStatus::Cause::killed, .number = SIGKILL});
}

} // namespace tw
