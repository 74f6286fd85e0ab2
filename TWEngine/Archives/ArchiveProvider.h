#pragma once

#include "TWCore/Archives/ArchiveTree.h"
#include "TWCore/Provider/FileSystemReader.h"
#include "TWEngine/Archives/ArchivePasswords.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/SSH/OneShotCommand.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace tw {

class EngineRuntime;

/// The members of an archive as the files of a place, whose root is "/".
///
/// The archive is listed once, and all folders come from memory then. There is no writer: an archive is changed as a
/// whole, by other means.
///
/// Threads: serialised on its own strand; every operation may be called from anywhere.
/// Lifetime: shared; the engine outlives it.
/// Cancellation: listing the archive, and reading a member, stop.
/// Errors: FileOperationError, SpawnError, and what the host that holds the archive throws.
class ArchiveProvider final : public FileSystemReader, public std::enable_shared_from_this<ArchiveProvider> {
public:
    struct Archive {
        TransferEndpoint file; ///< itself, on the machine that holds it
        std::string hostLabel; ///< tells archives of like paths on several machines apart
        /// Brings a copy of an archive that lies in another one to this machine, and answers its path. Empty: no tool
        /// needs a copy.
        std::function<Task<std::string>()> bring = {};
        ArchivePasswords::Shared passwords = {}; ///< null: nobody is asked for one
    };

    /// Starts nothing. `sshProgram` reads members of archives on hosts.
    ArchiveProvider(EngineRuntime &engine, Archive archive, std::string sshProgram);

    std::string identifier() const override { return "archive:" + archive.hostLabel + ":" + archive.file.path(); }

    std::string displayName() const override;

    int maxUsefulDepth() const override { return 64; }

    /// Lists the archive unless that was done. After a failure a later call tries again.
    Task<void> connect() override;

    /// Forgets the members: the next question lists the archive anew.
    Task<void> disconnect() override;

    Task<Listings> fetch(std::string path, int depth, FetchPriority priority) override;

    /// Reads the member from its beginning, so far into it as is asked for.
    Task<std::string> readChunk(std::string path, std::int64_t offset, std::size_t length) override;

    /// As the listing has it.
    Task<std::int64_t> fileSize(std::string path) override;

    Task<void> download(std::string path, std::string localPath) override;

    /// Always fails, without an effect.
    Task<void> upload(std::string localPath, std::string path) override;

    /// The sizes of files and folders, with everything below them, as the listing has them. At most the largest number.
    Task<std::int64_t> bytesOf(std::vector<std::string> paths);

    /// The members elsewhere that have the content of hard links among these files and below these folders.
    Task<std::vector<std::string>> contentsOutside(std::vector<std::string> paths);

    /// The archive file, as an endpoint, or the copy that is read in its place.
    Task<TransferEndpoint> file();

private:
    using Self = std::shared_ptr<ArchiveProvider>;

    static Task<void> connectHere(Self self);
    static Task<TransferEndpoint> fileHere(Self self);
    static Task<void> disconnectHere(Self self);
    static Task<Listings> fetchHere(Self self, std::string path, int depth);
    static Task<std::string> readChunkHere(Self self, std::string path, std::int64_t offset, std::size_t length);
    static Task<std::int64_t> fileSizeHere(Self self, std::string path);
    static Task<std::vector<std::string>> contentsHere(Self self, std::vector<std::string> paths);
    static Task<std::int64_t> bytesHere(Self self, std::vector<std::string> paths);
    static Task<void> downloadHere(Self self, std::string path, std::string localPath);
    std::string memberName(std::string const &path) const;
    static Task<void> read(Self self, std::string path, OneShotCommand::Taker taker);

    // Constant after construction.
    EngineRuntime &engine;
    Strand const strand;
    Archive const archive;
    std::string const sshProgram;

    // On the strand.
    std::string copy; ///< the path of what was brought; empty: nothing was
    ArchiveTree tree;
    bool beginWithDot = false;                    ///< see ArchiveMembers
    std::map<std::string, std::string> hardLinks; ///< the path of the content by that of the link
    bool isLoaded = false;
    int forgettings = 0; ///< how often the members were forgotten
    /// The user has given no password for a member, and is not asked for each file of a preview again.
    bool isRefused = false;
};

} // namespace tw
