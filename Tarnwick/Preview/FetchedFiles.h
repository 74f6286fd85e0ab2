#pragma once

#include "TWCore/Provider/FileSystemReader.h"
#include "TWEngine/Runtime/EngineRuntime.h"

#include <functional>
#include <list>
#include <memory>
#include <string>

namespace tw {

/// Copies of files of hosts, kept for as long as there is room: what was looked at is often looked at again.
///
/// Threads: one executor; a file that is being read may be removed, and is then read to its end all the same.
/// Lifetime: the engine outlives it. The folder goes with the process.
class FetchedFiles {
public:
    /// Together; the file that was asked for longest ago goes first.
    static constexpr std::int64_t mostBytes = 512 * 1024 * 1024;
    static constexpr std::size_t mostFiles = 256;

    /// Names the folder, and makes it if it is missing. Blocks. Throws.
    using MakeFolder = std::function<std::string()>;

    FetchedFiles(EngineRuntime &runtime, MakeFolder folder);
    ~FetchedFiles();

    /// The copy of `path`, fetched unless there is one. `key` says which file it is, and which version of it; `label`
    /// is the host. Throws what the fetching throws.
    Task<std::string> copyOf(std::shared_ptr<FileSystemReader> reader, std::string path, std::int64_t size,
                             std::string key, std::string label);

private:
    struct Copy {
        std::string key;
        std::string local;
        std::int64_t size;
    };

    struct State;

    static Task<std::string> fetch(std::shared_ptr<State> state, std::shared_ptr<FileSystemReader> reader,
                                   std::string path, std::int64_t size, std::string key, std::string label);

    std::shared_ptr<State> const state;
};

} // namespace tw
