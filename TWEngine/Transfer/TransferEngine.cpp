#include "TWEngine/Transfer/TransferEngine.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/ChildTask.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Runtime/EngineRuntime.h"
#include "TWEngine/Transfer/HostCopy.h"
#include "TWEngine/Transfer/HostSlots.h"
#include "TWEngine/Transfer/LocalCopy.h"
#include "TWEngine/Transfer/Measuring.h"
#include "TWEngine/Transfer/TarPipe.h"

namespace tw {

namespace {

/// In one order on all hosts, or two transfers could each wait for what the other one has.
Task<std::vector<HostSlots::Slot>> takeSlots(TransferWork::Shared work)
{
    std::vector<std::string> hosts;
    for (auto const *const endpoint : {&work->from, &work->to})
        if (endpoint->host())
            hosts.push_back(endpoint->host()->host());
    std::ranges::sort(hosts);
    std::vector<HostSlots::Slot> slots;
    for (auto const &host : hosts) {
        auto slot = co_await HostSlots::shared()->take(host);
        slots.push_back(std::move(slot));
    }
    co_return slots;
}

/// A side of a tar pipe: how its programs are called.
struct Side {
    TransferEndpoint endpoint;
    ShellDialect dialect = ShellDialect::posix;
    std::vector<std::string> transportOptions = {};
};

Task<Side> sideOf(TransferEndpoint endpoint)
{
    Side side{endpoint};
    if (auto const host = endpoint.host()) {
        side.dialect = co_await host->dialect();
        side.transportOptions = co_await host->transportOptions();
    }
    co_return side;
}

ChildCommand producerOf(TransferTools const &tools, Side const &side, std::span<std::string const> names)
{
    auto const &folder = side.endpoint.path();
    if (!side.endpoint.host())
        return TransferCommands::pack(tools, folder, names);
    auto client = TransferCommands::overSSH(tools, side.transportOptions, side.endpoint.host()->host(),
                                            TransferCommands::packThere(side.dialect, folder, names));
    client.output = PipeEnd{};
    return client;
}

ChildCommand consumerOf(TransferTools const &tools, Side const &side)
{
    auto const &folder = side.endpoint.path();
    if (!side.endpoint.host())
        return TransferCommands::unpack(tools, folder);
    auto client = TransferCommands::overSSH(tools, side.transportOptions, side.endpoint.host()->host(),
                                            TransferCommands::unpackThere(side.dialect, folder));
    client.input = PipeEnd{};
    return client;
}

TarPipe::Stream streamOf(TransferTools const &tools, Side const &from, Side const &to,
                         std::span<std::string const> some)
{
    std::vector<std::string> const names(some.begin(), some.end());
    TarPipe::Stream stream{
        .names = names, .producer = producerOf(tools, from, names), .consumer = consumerOf(tools, to), .guard = {}};
    if (from.endpoint.host())
        stream.guard.emplace(names, to.dialect);
    return stream;
}

} // namespace

TransferEngine::Route TransferEngine::routeOf(TransferEndpoint const &from, TransferEndpoint const &to)
{
    if (!from.host() && !to.host())
        return Route::onThisMachine;
    if (from.host() && to.host() && from.host()->host() == to.host()->host())
        return Route::withinOneHost;
    return Route::tarPipe;
}

TransferEngine::TransferEngine(EngineRuntime &runtime, TransferTools programs)
    : engine(runtime), tools(std::move(programs)), strand(runtime.makeStrand())
{
}

Task<void> TransferEngine::copy(std::vector<std::string> names, TransferEndpoint from, TransferEndpoint to,
                                Reporter onProgress)
{
    auto text = TransferCommands::label(names);
    auto const work = std::make_shared<TransferWork>(engine, tools, std::move(names), std::move(from), std::move(to),
                                                     std::move(onProgress), std::move(text));
    // A cancel before this call is forgotten, and one behind it counts, also if the copy has not begun.
    std::lock_guard const lock(mutex);
    cancelled = std::stop_source();
    last = {};
    return onStrand(strand, copyHere(shared_from_this(), work, cancelled));
}

void TransferEngine::cancel()
{
    std::unique_lock lock(mutex);
    auto source = cancelled;
    lock.unlock();
    source.request_stop();
}

TransferSummary TransferEngine::summary() const
{
    std::lock_guard const lock(mutex);
    return last;
}

Task<void> TransferEngine::copyHere(Self self, TransferWork::Shared work, std::stop_source own)
{
    if (work->names.empty())
        co_return;
    auto const context = co_await currentContext();
    std::stop_callback const passOn(context.stop, [own]() mutable { own.request_stop(); });
    auto outcome = co_await outcomeOf(perform(work).withStop(own.get_token()));
    auto &summary = work->summary;
    if (work->measure)
        summary.totalFiles = work->measure->files;
    // A copy may fail before it comes to a name.
    if (summary.complete.empty() && summary.partial.empty() && summary.untouched.empty())
        summary.untouched = work->names;
    {
        std::lock_guard const lock(self->mutex);
        self->last = summary;
    }
    if (context.stop.stop_requested())
        throw Cancelled();
    // Whatever the programs said when they were ended.
    if (own.stop_requested())
        throw FileOperationError::Cancelled();
    outcome.take();
}

Task<void> TransferEngine::perform(TransferWork::Shared work)
{
    auto const route = routeOf(work->from, work->to);
    if (route == Route::withinOneHost) {
        co_await HostCopy::run(work);
        co_return;
    }
    if (route == Route::onThisMachine) {
        co_await LocalCopy::run(work);
        co_return;
    }
    // Beside the copy: nobody waits for a total. The task is dropped, and not waited for, if the copy ends first.
    auto const context = co_await currentContext();
    auto const measuring = ChildTask<void>::start(context, Measuring::run(work));
    co_await stream(work);
}

Task<void> TransferEngine::stream(TransferWork::Shared work)
{
    work->reportStep(0, 0, work->label);
    auto const slots = co_await takeSlots(work);
    auto const from = co_await sideOf(work->from);
    auto const to = co_await sideOf(work->to);
    std::span<std::string const> left = work->names;
    while (!left.empty()) {
        // A command line holds so many names; there is a stream for each of these.
        auto const some = TransferCommands::fittingFront(from.dialect, left);
        auto const carried = co_await outcomeOf(TarPipe::run(work, streamOf(work->tools, from, to, some)));
        left = left.subspan(some.size());
        if (carried.failure) {
            work->summary.untouched.insert(work->summary.untouched.end(), left.begin(), left.end());
            std::rethrow_exception(carried.failure);
        }
    }
}

} // namespace tw
