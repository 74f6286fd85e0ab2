#include "TWEngine/Instance/InstanceDesk.h"

#include "TWEngine/Instance/InstanceCall.h"
#include "TWEngine/Runtime/ChildPipe.h"
#include "TWEngine/Runtime/PipeError.h"
#include "TWEngine/Runtime/TimeOut.h"

#include <unistd.h>

namespace tw {

struct InstanceDesk::State {
    Collaborators with;
    std::stop_source over;
    int callers = 0;
};

namespace {

/// Nothing if the caller hangs up before, or says too much.
Task<std::optional<std::string>> messageOn(std::shared_ptr<ChildPipe> line)
{
    std::string received;
    std::string piece;
    for (;;) {
        piece = co_await line->read(std::move(piece));
        received += piece;
        if (piece.empty() || received.size() > InstanceDesk::longestMessage)
            co_return std::nullopt;
        if (InstanceDesk::isWhole(received))
            co_return received;
    }
}

} // namespace

bool InstanceDesk::isWhole(std::string_view received)
{
    constexpr std::string_view end("\0\0", 2);
    return received.ends_with(end);
}

InstanceDesk::InstanceDesk(Collaborators collaborators)
    : state(std::make_shared<State>(State{.with = std::move(collaborators), .over = {}}))
{
    spawn({state->with.executor, state->over.get_token()}, listen(state));
}

InstanceDesk::~InstanceDesk()
{
    state->over.request_stop();
    state->with.understand = nullptr;
    state->with.listener->close();
}

Task<void> InstanceDesk::listen(std::shared_ptr<State> state)
{
    auto const context = co_await currentContext();
    try {
        for (;;) {
            auto caller = co_await state->with.listener->accept();
            if (caller.user != ::getuid() || state->callers >= mostCallers)
                continue; // hangs up
            ++state->callers;
            auto const line = std::make_shared<ChildPipe>(state->with.io, std::move(caller.connection));
            spawn(context, serve(state, line));
        }
    } catch (PipeError const &) {
        // Closed, or no descriptors are left: later starts open windows of their own.
    }
}

Task<void> InstanceDesk::serve(std::shared_ptr<State> state, std::shared_ptr<ChildPipe> line)
{
    try {
        auto const message = co_await withTimeOut(state->with.clock, messageLimit, messageOn(line));
        auto const act = message && state->with.understand ? state->with.understand(*message) : nullptr;
        if (act) {
            co_await line->write(std::string(InstanceCall::agreement));
            act();
        }
    } catch (PipeError const &) {
        // The caller is gone.
    } catch (TimedOut const &) {
        // It is no start of this program.
    } catch (Cancelled const &) {
        // This program ends.
    }
    --state->callers;
}

} // namespace tw
