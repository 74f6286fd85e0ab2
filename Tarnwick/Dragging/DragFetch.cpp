#include "Tarnwick/Dragging/DragFetch.h"

#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Connections/Connections.h"
#include "Tarnwick/Operations/CountPhrase.h"
#include "Tarnwick/Operations/TransferSteps.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tw {

namespace {

constexpr std::int64_t bytesPerMebibyte = 1024 * 1024;

std::int64_t bytesOf(Survey const &survey)
{
    std::int64_t sum = 0;
    for (auto const &[name, part] : survey.parts) // sizes are what a host claims, and may be anything
        sum += std::clamp<std::int64_t>(part.bytes, 0, std::numeric_limits<std::int64_t>::max() - sum);
    return sum;
}

Dialogs::Confirmation question(Operands const &files, std::int64_t bytes)
{
    return {.title = "Fetch " + countPhrase(files.names.size()),
            .message = grouped(bytes / bytesPerMebibyte) + " MB come from " + onOneLine(files.connection) +
                       ", and the other program waits for them.",
            .okTitle = "Fetch"};
}

} // namespace

DragFetch::DragFetch(OperationContext what, std::shared_ptr<Executor> mainContext, std::shared_ptr<Clock> clock,
                     Limits bounds)
    : context(std::move(what)),
      executor(std::move(mainContext)),
      limits(bounds),
      timeUp(executor, std::move(clock), [this] {
          tookTooLong = true;
          copying->request_stop();
      })
{
}

void DragFetch::prepare(MakeFolder const &make)
{
    spawn({executor, {}}, makeFolder(weak_from_this(), make()));
}

Task<void> DragFetch::makeFolder(std::weak_ptr<DragFetch> weak, Task<std::string> making)
{
    auto const made = co_await outcomeOf(std::move(making));
    auto const self = weak.lock();
    if (!made.value)
        co_return; // nothing is offered to other programs
    if (self && !self->isOver)
        self->folder = *made.value;
    else if (self)
        self->remove(*made.value);
}

std::vector<std::string> DragFetch::paths() const
{
    std::vector<std::string> all;
    if (folder.empty() || (isOver && !hasArrived))
        return all;
    for (auto const &name : context.operands.names)
        all.push_back(folder + "/" + name);
    return all;
}

void DragFetch::start(std::function<void(End end)> whenOver)
{
    onEnd = std::move(whenOver);
    if (folder.empty())
        end(End::missed);
    else
        spawn({executor, asking.get_token()}, run(shared_from_this()));
}

Task<void> DragFetch::run(Self self)
{
    auto const wanted = co_await outcomeOf(isWanted(self->context, self->limits.askAbove));
    if (!self->isOver && !wanted.value.value_or(false)) {
        self->end(End::missed);
        if (wanted.failure)
            co_await self->context.showFailure(wanted.failure);
        co_return;
    }
    auto done = TransferEnd();
    if (!self->isOver) {
        self->copying.emplace();
        self->timeUp.set(self->limits.time);
        auto end = co_await copy(self);
        self->timeUp.cancel();
        done = std::move(end);
    }
    if (self->isOver)
        co_return self->remove(std::exchange(self->folder, {}));
    self->end(done.failure ? End::missed : End::arrived);
    if (self->tookTooLong)
        self->context.warn({"nothing was dropped: the files were not here after %d seconds",
                            {std::to_string(self->limits.time.count())}});
    else
        co_await TransferSteps::tell(self->context, {.source = self->context.operands}, done);
}

Task<bool> DragFetch::isWanted(OperationContext context, std::int64_t askAbove)
{
    auto const &files = context.operands;
    auto work = context.beginWork();
    auto const survey = co_await files.browser->survey(files.path, files.names);
    work.reset();
    auto const bytes = bytesOf(survey);
    if (bytes <= askAbove)
        co_return true;
    auto const answer = co_await context.dialogs->confirm(question(context.operands, bytes));
    co_return answer == Dialogs::Answer::ok;
}

Task<TransferEnd> DragFetch::copy(Self self)
{
    TransferJob job{.source = self->context.operands};
    job.target = {.browser = self->context.connections->local(),
                  .connection = localConnection,
                  .path = self->folder,
                  .names = {}};
    job.plan = TransferPlan::of(job.source.names, {}, {});
    return TransferSteps::perform(self->context, std::move(job), {}, self->copying->get_token());
}

void DragFetch::end(End how)
{
    hasArrived = how == End::arrived;
    if (auto const report = std::exchange(onEnd, nullptr))
        report(how);
}

void DragFetch::finish()
{
    if (hasArrived || std::exchange(isOver, true))
        return;
    auto const wasUnderWay = std::exchange(onEnd, nullptr) != nullptr;
    (copying ? *copying : asking).request_stop();
    if (!wasUnderWay && !folder.empty())
        remove(std::exchange(folder, {}));
}

void DragFetch::remove(std::string what) const
{
    if (!what.empty())
        spawn({executor, {}}, removeCopies(context.connections->local(), std::move(what)));
}

Task<void> DragFetch::removeCopies(std::shared_ptr<Browser> local, std::string folder)
{
    std::vector<std::string> paths{std::move(folder)};
    // Best effort: it goes with the process.
    co_await outcomeOf(local->removePermanently(std::move(paths), LockedFolders::go));
}

} // namespace tw
