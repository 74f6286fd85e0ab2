#pragma once

#include "TWCore/Async/Clock.h"
#include "TWCore/Provider/FileSystemReader.h"
#include "TWCore/Provider/FileSystemWriter.h"
#include "TWCore/Provider/FolderEvents.h"
#include "TWEngine/Runtime/FileLanes.h"

namespace tw {

class EngineRuntime;

/// The files of this machine.
///
/// Stateless: every call blocks in the lane of the mount that its path lies on, and calls may overlap. Paths are bytes,
/// as the kernel takes them.
///
/// Threads: may be used from anywhere.
/// Lifetime: the engine outlives it and every operation in flight.
/// Errors: LocalProviderError from `fetch`, ReadError from reading, PlatformError from `upload`, FileOperationError
/// from the other writes.
class LocalProvider final : public FileSystemReader, public FileSystemWriter, public FolderEvents {
public:
    explicit LocalProvider(EngineRuntime &runtime);

    std::string identifier() const override { return "local"; }

    std::string displayName() const override { return "This Mac"; }

    int maxUsefulDepth() const override { return 1; }

    /// Lists the one directory, whatever the `depth`. What is mounted in the directory and does not answer is listed
    /// without size and time.
    Task<Listings> fetch(std::string path, int depth, FetchPriority priority) override;

    Task<std::string> readChunk(std::string path, std::int64_t offset, std::size_t length) override;

    /// Of a link itself, not of its target.
    Task<std::int64_t> fileSize(std::string path) override;

    Task<void> download(std::string path, std::string localPath) override;
    Task<void> upload(std::string localPath, std::string path) override;

    /// `remove` moves to the Trash.
    bool deleteIsReversible() const override { return true; }

    /// Makes missing folders above it too. An existing folder is a success.
    Task<void> makeDirectory(std::string path) override;

    /// In order, up to the first failure: earlier paths stay in the Trash. Throws FileOperationError::NoTrash where a
    /// path has none.
    Task<void> remove(std::vector<std::string> paths) override;

    /// Between two file systems this copies, and deletes the original last; see moveToOtherFileSystem.
    Task<void> rename(std::string from, std::string to) override;
    Task<void> moveAll(std::vector<Move> moves, Existing existing) override;

    /// In order, up to the first failure.
    Task<void> removePermanently(std::vector<std::string> paths, LockedFolders locked) override;

    Task<void> removeEmptyFolder(std::string path) override;

    Task<FolderFacts> factsAbout(std::string folder, std::vector<std::string> names) override;
    Task<Survey> survey(std::string folder, std::vector<std::string> names, Survey::Detail detail) override;
    Task<void> sync(std::string folder) override;

    Task<std::shared_ptr<FolderWatch>> watchFolder(std::string path) override;

private:
    EngineRuntime &engine;
    FileLanes &lanes;
    std::shared_ptr<Clock> const clock;
};

} // namespace tw
