#include "TWEngine/Archives/ArchiveEngine.h"

#include "TWCore/Async/Cancelled.h"
#include "TWCore/Async/FailureKind.h"
#include "TWCore/Async/Outcome.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWEngine/Archives/ArchiveChange.h"
#include "TWEngine/Archives/ArchivePacking.h"
#include "TWEngine/Archives/ArchiveUnpacking.h"
#include "TWEngine/Archives/LocalArchiveTools.h"
#include "TWEngine/Transfer/HostWork.h"
#include "TWEngine/Transfer/TransferEngine.h"

namespace tw {

ArchiveEngine::ArchiveEngine(EngineRuntime &runtime, TransferTools programs, ArchivePasswords::Shared typed)
    : engine(runtime), tools(std::move(programs)), passwords(std::move(typed)), strand(runtime.makeStrand())
{
}

ArchiveEngine::ArchiveEngine(EngineRuntime &runtime, TransferTools programs, ArchivePasswords::Shared typed,
                             ArchiveTools archiveTools)
    : engine(runtime),
      tools(std::move(programs)),
      passwords(std::move(typed)),
      here(std::move(archiveTools)),
      strand(runtime.makeStrand())
{
}

Task<void> ArchiveEngine::pack(Names names, TransferEndpoint from, TransferEndpoint archive, ArchiveFormat format,
                               Reporter onProgress)
{
    return begin(archive, std::move(onProgress),
                 [names = std::move(names), from = std::move(from), archive, format](ArchiveWork::Shared work) {
                     return ArchivePacking::pack(std::move(work), names, from, archive, format);
                 });
}

Task<void> ArchiveEngine::extract(Members members, TransferEndpoint archive, TransferEndpoint into, Reporter onProgress)
{
    return begin(archive, std::move(onProgress),
                 [members = std::move(members), archive, into = std::move(into)](ArchiveWork::Shared work) {
                     return ArchiveUnpacking::extract(std::move(work), members, archive, into);
                 });
}

Task<void> ArchiveEngine::unpack(TransferEndpoint archive, TransferEndpoint into, Reporter onProgress)
{
    return begin(archive, std::move(onProgress), [archive, into = std::move(into)](ArchiveWork::Shared work) {
        return ArchiveUnpacking::unpack(std::move(work), archive, into);
    });
}

Task<void> ArchiveEngine::add(Names paths, std::string archive, std::string inner, Reporter onProgress)
{
    return begin(TransferEndpoint::local(archive), std::move(onProgress),
                 [paths = std::move(paths), archive, inner = std::move(inner)](ArchiveWork::Shared work) {
                     return ArchiveChange::add(std::move(work), paths, archive, inner);
                 });
}

Task<void> ArchiveEngine::remove(Names members, std::string archive, Reporter onProgress)
{
    return begin(TransferEndpoint::local(archive), std::move(onProgress),
                 [members = std::move(members), archive](ArchiveWork::Shared work) {
                     return ArchiveChange::remove(std::move(work), members, archive);
                 });
}

void ArchiveEngine::cancel()
{
    std::unique_lock lock(mutex);
    auto source = cancelled;
    lock.unlock();
    source.request_stop();
}

Task<void> ArchiveEngine::begin(TransferEndpoint archive, Reporter onProgress, Operation operation)
{
    auto working = perform(shared_from_this(), std::move(archive), std::move(onProgress), std::move(operation));
    // A cancel before this call is forgotten, and one behind it counts, also if the work has not begun.
    std::lock_guard const lock(mutex);
    cancelled = std::stop_source();
    return onStrand(strand, carryOut(std::move(working), cancelled));
}

Task<void> ArchiveEngine::carryOut(Task<void> working, std::stop_source own)
{
    auto const context = co_await currentContext();
    std::stop_callback const passOn(context.stop, [own]() mutable { own.request_stop(); });
    auto outcome = co_await outcomeOf(std::move(working).withStop(own.get_token()));
    if (context.stop.stop_requested())
        throw Cancelled();
    // Whatever the tools said when they were ended.
    if (own.stop_requested() && !failureIs<HostWork::MayGoOn>(outcome.failure))
        throw FileOperationError::Cancelled();
    outcome.take();
}

Task<void> ArchiveEngine::perform(Self self, TransferEndpoint archive, Reporter onProgress, Operation operation)
{
    auto const work = co_await workOf(self, std::move(onProgress));
    co_await ArchivePasswords::perform<void>(self->passwords, archive, [work, operation](auto password) {
        auto with = std::make_shared<ArchiveWork>(*work);
        with->password = std::move(password);
        return operation(std::move(with));
    });
}

void ArchiveEngine::takeAnySize()
{
    std::lock_guard const lock(mutex);
    takesAnySize = true;
}

Task<ArchiveWork::Shared> ArchiveEngine::workOf(Self self, Reporter onProgress)
{
    auto tools = self->here.value_or(ArchiveTools());
    if (!self->here)
        tools = co_await LocalArchiveTools::ofThisMachine(self->engine);
    std::lock_guard const lock(self->mutex);
    co_return std::make_shared<ArchiveWork const>(
        ArchiveWork{self->engine, self->tools, std::move(tools), std::move(onProgress), {}, self->takesAnySize});
}

Task<std::vector<ArchiveFormat>> ArchiveEngine::formats(TransferEndpoint from, TransferEndpoint archive)
{
    return onStrand(strand, formatsFor(shared_from_this(), std::move(from), std::move(archive)));
}

Task<std::vector<ArchiveFormat>> ArchiveEngine::formatsFor(Self self, TransferEndpoint from, TransferEndpoint archive)
{
    // zip and 7z need a seekable output, which a stream between machines is not.
    if (TransferEngine::routeOf(from, archive) == TransferEngine::Route::tarPipe)
        co_return std::vector{ArchiveFormat::tarGz};
    if (archive.host()) {
        auto const capability = co_await archive.host()->archiveCapability();
        co_return capability.supportedFormats();
    }
    auto const work = co_await workOf(self, [](TransferProgress const &) {});
    co_return work->here.capability().supportedFormats();
}

} // namespace tw
