#pragma once

#include "TWCore/Async/Task.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/SSH/OneShotCommand.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// A file of this machine that a client of ours fills or reads.
struct TransferFile {
    enum class Purpose { toRead, toWrite };

    FileDescriptor descriptor;
    std::optional<std::int64_t> size; ///< bytes, of one that has them and not only yields some

    /// Opens it on a worker; one that is to be written is made, or emptied. Null if that fails, as it does for a
    /// folder and a named pipe.
    static Task<std::shared_ptr<TransferFile>> open(EngineRuntime &engine, std::string path, Purpose purpose);

    /// Writes what it takes to `file`, on a worker. We do it and not ssh, which can fail to and end as if all were
    /// well. Throws ReadError::NotReadable, naming `path`, in the words of the system.
    static OneShotCommand::Taker writer(EngineRuntime &engine, std::shared_ptr<TransferFile> file, std::string path);

    /// Closes `file` behind the last byte that was written to it, on a worker. Throws as a writer does.
    static Task<void> finish(EngineRuntime &engine, std::shared_ptr<TransferFile> file, std::string path);
};

} // namespace tw
