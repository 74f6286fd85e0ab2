#pragma once

#include "TWEngine/Archives/ArchivePasswords.h"
#include "TWEngine/Archives/ArchiveWork.h"
#include "TWEngine/Archives/Archives.h"
#include "TWEngine/Runtime/Strand.h"

#include <functional>
#include <mutex>

namespace tw {

/// The archives of this machine and of hosts.
///
/// Threads: serialised on its own strand; every operation may be called from anywhere.
/// Lifetime: shared; the engine outlives it. One is made for each operation.
class ArchiveEngine final : public Archives, public std::enable_shared_from_this<ArchiveEngine> {
public:
    /// `passwords` may be null: nobody is asked for one.
    ArchiveEngine(EngineRuntime &engine, TransferTools tools, ArchivePasswords::Shared passwords = {});

    /// With these archive tools of this machine, in place of what it has.
    ArchiveEngine(EngineRuntime &engine, TransferTools tools, ArchivePasswords::Shared passwords, ArchiveTools here);

    Task<std::vector<ArchiveFormat>> formats(TransferEndpoint from, TransferEndpoint archive) override;
    Task<void> pack(Names names, TransferEndpoint from, TransferEndpoint archive, ArchiveFormat format,
                    Reporter onProgress) override;
    Task<void> extract(Members members, TransferEndpoint archive, TransferEndpoint into, Reporter onProgress) override;
    Task<void> unpack(TransferEndpoint archive, TransferEndpoint into, Reporter onProgress) override;
    Task<void> add(Names paths, std::string archive, std::string inner, Reporter onProgress) override;
    Task<void> remove(Names members, std::string archive, Reporter onProgress) override;
    void takeAnySize() override;
    void cancel() override;

private:
    using Self = std::shared_ptr<ArchiveEngine>;

    using Operation = std::function<Task<void>(ArchiveWork::Shared work)>;

    Task<void> begin(TransferEndpoint archive, Reporter onProgress, Operation operation);
    static Task<void> carryOut(Task<void> working, std::stop_source own);
    static Task<void> perform(Self self, TransferEndpoint archive, Reporter onProgress, Operation operation);
    static Task<ArchiveWork::Shared> workOf(Self self, Reporter onProgress);
    static Task<std::vector<ArchiveFormat>> formatsFor(Self self, TransferEndpoint from, TransferEndpoint archive);

    // Constant after construction.
    EngineRuntime &engine;
    TransferTools const tools;
    ArchivePasswords::Shared const passwords;
    std::optional<ArchiveTools> const here;
    Strand const strand;

    std::mutex mutex;
    // Under the mutex.
    std::stop_source cancelled; ///< of the operation in flight or the next one
    bool takesAnySize = false;
};

} // namespace tw
