#pragma once

#include "TWCore/Provider/FileSystemReader.h"
#include "TWEngine/Platform/Scratch.h"
#include "TWEngine/Runtime/SharedTask.h"

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace tw {

class EngineRuntime;

/// Local copies of files that lie elsewhere, for programs of this machine to open.
///
/// A copy is used again as long as the original has the same size and time and nobody has changed the copy. Each copy
/// has a folder of its own, so that it keeps its name and a copy that was changed is not overwritten. All copies end
/// with the process.
///
/// Threads: one executor, which the caller's tasks run on.
/// Lifetime: shared; the engine outlives it.
class RemoteFiles : public std::enable_shared_from_this<RemoteFiles> {
public:
    /// A file to be fetched, and what its listing says of it.
    struct Source {
        std::shared_ptr<FileSystemProvider> provider;
        std::string connection;
        std::string path;
        std::optional<std::int64_t> size = {}; ///< bytes; nothing for a link, whose target nobody has looked at
        std::int64_t mtime = 0;                ///< whole seconds since 1970-01-01 UTC
    };

    /// A file up to this size is read through the session that is there, in one round trip. A client of its own takes
    /// two, and the time to start it.
    static constexpr std::int64_t mostOfSmall = 65536;

    /// The provider has files that cannot be read.
    class NoReader;

    /// More copies, or more bytes, than that are not kept: the least recently opened ones are removed.
    struct Limits {
        std::size_t copies = 64;
        std::int64_t bytes = std::int64_t(2) << 30U;
    };

    RemoteFiles(EngineRuntime &engine, Scratch::Place where, Limits limits);

    RemoteFiles(EngineRuntime &engine, Scratch::Place where) : RemoteFiles(engine, std::move(where), Limits()) {}

    /// The path of a copy that is as new as the source; nothing if it would have to be fetched.
    Task<std::optional<std::string>> known(Source source);

    /// The path of a copy, marked as a download and without the right to be executed. Those who ask for the same file
    /// at a time share one fetch.
    ///
    /// Cancellation: the fetch ends when all who wait for it are stopped.
    /// Errors: NoReader; FileOperationError for the copy; what the provider throws.
    Task<std::string> localCopy(Source source);

private:
    using Self = std::shared_ptr<RemoteFiles>;
    using Key = std::pair<std::string, std::string>; ///< connection and path

    /// What the system says of a copy: another answer, and somebody has changed it.
    struct Stamp {
        std::int64_t size = 0;
        std::int64_t mtime = 0; ///< nanoseconds

        friend bool operator==(Stamp const &, Stamp const &) = default;
    };

    struct Copy {
        Key key;
        std::string folder;
        std::string path;
        std::optional<std::int64_t> sizeThere;
        std::int64_t mtimeThere = 0;
        Stamp stamp = {};
    };

    struct Fetch {
        SharedTask<Copy> task;
        int waiters = 0;
    };

    static std::optional<Stamp> stampOf(std::string const &path);
    static Task<std::string> shareFetch(Self self, Source source);
    static Task<std::optional<std::string>> knownHere(Self self, Source source);
    static Task<Copy> fetch(Self self, Source source);
    static Task<Stamp> fill(Self self, Source source, std::string target);
    static Task<bool> readSmall(Self self, std::shared_ptr<FileSystemReader> reader, Source source, std::string target);
    void leave(Key const &key, SharedTask<Copy> const &task);
    void keep(Copy copy);
    void remove(std::string const &folder) const;

    // Constant after construction.
    EngineRuntime &runtime;
    Scratch::Place const place;
    Limits const bounds;

    // On the executor of the callers.
    std::list<Copy> copies; ///< the last used one first
    std::map<Key, Fetch> fetches;
};

class RemoteFiles::NoReader final : public std::exception {
public:
    explicit NoReader(std::string const &connection) : description(connection + " cannot read files") {}

    char const *what() const noexcept override { return description.c_str(); }

private:
    std::string const description;
};

} // namespace tw
