#pragma once

#include "TWEngine/Archives/ArchivePasswords.h"
#include "Tarnwick/Connections/OpenArchive.h"

#include <functional>
#include <memory>
#include <string>

namespace tw {

class EngineRuntime;
class RemoteFiles;

/// Gives each archive that is entered a Browser of its own, which keeps nothing for the next start.
///
/// Lifetime: the engine outlives what is opened.
struct ArchiveBrowsers {
    /// Copies a member of an archive to this machine, under its own name, and answers the path.
    using CopyMember = std::function<Task<std::string>(ArchiveFile member)>;

    EngineRuntime &engine;
    std::string sshProgram; ///< reads members of archives on hosts
    CopyMember copyOf = {}; ///< empty: archives inside others cannot be opened
    ArchivePasswords::Shared passwords = {};

    /// By `copies`, which is used on the main context.
    static CopyMember copiesBy(std::shared_ptr<Executor> mainContext, std::shared_ptr<RemoteFiles> copies);

    std::shared_ptr<Browser> operator()(ArchiveFile const &file) const;
};

} // namespace tw
