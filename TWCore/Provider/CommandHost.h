#pragma once

#include "TWCore/Archives/ArchiveCapability.h"
#include "TWCore/Provider/FileSystemProvider.h"
#include "TWCore/Provider/HostCommand.h"
#include "TWCore/Shell/ShellDialect.h"

#include <string>
#include <vector>

namespace tw {

/// A place that is a host on which commands can be run.
///
/// A provider tells by being one, which is asked with `dynamic_cast`. Everything above the engine knows a host by this.
///
/// Threads, lifetime: as FileSystemProvider.
class CommandHost : public virtual FileSystemProvider {
public:
    /// The destination as ssh takes it: an alias, a host name or `user@host`.
    virtual std::string host() const = 0;

    /// What the host's shell speaks; posix before the first connection.
    virtual Task<ShellDialect> dialect() = 0;

    /// Where the host's shell starts: the folder to open if none was asked for; "/" before the first connection.
    virtual Task<std::string> defaultDirectory() = 0;

    /// What the host's archive tools can do; nothing at all before the first connection.
    virtual Task<ArchiveCapability> archiveCapability() = 0;

    /// The arguments with which an ssh client of one's own shares the connection in use, before "--" and the host.
    virtual Task<std::vector<std::string>> transportOptions() = 0;

    /// True if a connection that was let go can come back without a question to the user.
    virtual Task<bool> logsInByItself() = 0;

    /// Runs a command to its end. Its standard input is empty. A status other than 0 is no error here.
    ///
    /// Cancellation: a command that was sent is waited for.
    virtual Task<CommandResult> runCommand(HostCommand command) = 0;
};

} // namespace tw
