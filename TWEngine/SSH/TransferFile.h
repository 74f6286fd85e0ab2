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

/// A file of this machine that an ssh client reads, or whose content comes from one.
struct TransferFile {
    enum class Purpose { toRead, toWrite };

    FileDescriptor descriptor;
    std::optional<std::int64_t> size; ///< bytes; nothing if only reading shows how many, as below /proc

    /// Opens the file, on a worker thread. To write, it creates the file or empties it. Null if that fails; folders and
    /// named pipes count as failures.
    static Task<std::shared_ptr<TransferFile>> open(EngineRuntime &engine, std::string path, Purpose purpose);

    /// Writes each piece to `file`, on a worker thread. ssh is not given the file itself, since it can fail to write
    /// and still exit with success. Throws ReadError::NotReadable with `path` and the system's description.
    static OneShotCommand::Taker writer(EngineRuntime &engine, std::shared_ptr<TransferFile> file, std::string path);

    /// Closes `file` after the last byte, on a worker thread. Throws what `writer` throws.
    static Task<void> finish(EngineRuntime &engine, std::shared_ptr<TransferFile> file, std::string path);
};

} // namespace tw
