#pragma once

#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Transfer/Transfer.h"
#include "TWEngine/Transfer/TransferTools.h"
#include "TWEngine/Transfer/TransferWork.h"

#include <mutex>

namespace tw {

/// Moves the bytes: with cp on this machine, with cp on a host, or with tar through this machine.
///
/// The endpoints alone decide which of them; see `routeOf`. A host is asked over its provider for little more than its
/// size: bytes have an ssh client of their own, so that a transfer blocks no listing.
///
/// Threads: serialised on its own strand; every operation may be called from anywhere.
/// Lifetime: shared; the engine outlives it. One is made for each operation.
/// Errors: FileOperationError; SpawnError if a program cannot be started; what `runCommand` of a host throws.
class TransferEngine final : public Transfer, public std::enable_shared_from_this<TransferEngine> {
public:
    enum class Route { onThisMachine, withinOneHost, tarPipe };

    /// Two providers of one host are that host; two spellings of one host are two.
    static Route routeOf(TransferEndpoint const &from, TransferEndpoint const &to);

    TransferEngine(EngineRuntime &engine, TransferTools tools);

    Task<void> copy(std::vector<std::string> names, TransferEndpoint from, TransferEndpoint to,
                    Reporter onProgress) override;
    void cancel() override;
    TransferSummary summary() const override;

private:
    using Self = std::shared_ptr<TransferEngine>;

    static Task<void> copyHere(Self self, TransferWork::Shared work, std::stop_source own);
    static Task<void> perform(TransferWork::Shared work);
    static Task<void> stream(TransferWork::Shared work);

    // Constant after construction.
    EngineRuntime &engine;
    TransferTools const tools;
    Strand const strand;

    std::mutex mutable mutex;
    // Under the mutex.
    std::stop_source cancelled; ///< of the copy in flight or the next one
    TransferSummary last;
};

} // namespace tw
