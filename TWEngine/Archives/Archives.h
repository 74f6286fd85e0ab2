#pragma once

#include "TWCore/Archives/ArchiveFormat.h"
#include "TWEngine/Transfer/Transfer.h"
#include "TWEngine/Transfer/TransferEndpoint.h"

namespace tw {

/// Makes, opens and changes archives, with the tools of the machines that hold them.
///
/// What is unpacked, packed or changed waits in a folder beside its place until all of it is there, so that a failure
/// or a cancel leaves everything as it was. Nothing is written outside of that folder, whatever is in an archive: the
/// tools see to that, and are tested for it.
///
/// An archive is an endpoint whose path is that of the archive file. `onProgress` is called from any thread.
///
/// Threads: may be used from anywhere; one operation at a time.
/// Lifetime: shared; an operation in flight keeps it.
/// Cancellation: by `cancel` or a stop, within 0.2 s; what an operation had begun is removed behind it.
/// Errors: FileOperationError (Cancelled after `cancel`, or if the user gives no password); SpawnError; what
/// `runCommand` of a host throws.
class Archives {
public:
    using Reporter = Transfer::Reporter;
    using Names = std::vector<std::string>;

    virtual ~Archives() = default;

    /// The formats in which names of a folder can be packed into an archive of that machine, the suggested one first.
    virtual Task<std::vector<ArchiveFormat>> formats(TransferEndpoint from, TransferEndpoint archive) = 0;

    /// Packs names of a folder into a new archive, on the machine of the folder or on another one. A file there is
    /// replaced.
    virtual Task<void> pack(Names names, TransferEndpoint from, TransferEndpoint archive, ArchiveFormat format,
                            Reporter onProgress) = 0;

    struct Members {
        /// As an ArchiveProvider shows them, without a slash at the beginning.
        Names paths;
        /// Members elsewhere that a tool needs for hard links among these.
        Names contents = {};
        std::int64_t bytes = 0; ///< of all paths
    };

    /// Unpacks members into the folder `into`, between any two machines. A member arrives under its last name, with
    /// everything below it. A file there is replaced, and a folder is merged. Throws ArchiveTooLarge before it begins,
    /// see UnpackRoom.
    virtual Task<void> extract(Members members, TransferEndpoint archive, TransferEndpoint into,
                               Reporter onProgress) = 0;

    /// Unpacks the whole archive into the new folder `into`, between any two machines. If everything in it is in one
    /// folder that has the archive's name, that becomes the new folder. Fails if `into` is there already. Throws
    /// ArchiveTooLarge before it begins.
    virtual Task<void> unpack(TransferEndpoint archive, TransferEndpoint into, Reporter onProgress) = 0;

    /// Adds files and folders of this machine to an archive of this machine, in its folder `inner`; "" is its root.
    /// Members of the same names are replaced.
    virtual Task<void> add(Names paths, std::string archive, std::string inner, Reporter onProgress) = 0;

    /// Removes members, with everything below them, from an archive of this machine. Fails if none would be left.
    virtual Task<void> remove(Names members, std::string archive, Reporter onProgress) = 0;

    /// From now on nothing is too large: the user wants it all the same.
    virtual void takeAnySize() = 0;

    /// Ends the operation in flight, on all machines that take part.
    virtual void cancel() = 0;
};

} // namespace tw
