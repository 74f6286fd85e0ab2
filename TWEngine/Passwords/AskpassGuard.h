#pragma once

#include "TWEngine/Passwords/ProcessTable.h"

/// Allows a saved password only to an ssh that this very program has started.
///
/// Any program can set a variable and run this program, so the guard looks at the ancestors of the process. It does not
/// protect against a program that may read our memory.
namespace tw::AskpassGuard {

/// The number of ancestors that are looked at: a shell or two may be between ssh and the program.
inline constexpr int mostSteps = 6;

/// True if an ancestor of this process is ssh or sftp, and an ancestor of that ssh is this program. Ancestors that
/// cannot be read are skipped.
bool calledByOurOwnSSH();

/// The same for the process `self` in a table.
bool calledByOurOwnSSH(pid_t self, ProcessTable const &processes);

/// For whom the process `asker` asks, seen from the process `program`.
enum class Caller {
    stranger, ///< `program` has not started an ssh or sftp that asks
    host,
    jumpHost ///< the ssh that asks was started by another ssh
};
Caller callerBelow(pid_t program, pid_t asker, ProcessTable const &processes);

/// True if the ssh that asks was started by another ssh, to reach a jump host. The saved password belongs to the target
/// host, and must not be sent to the jump host.
bool calledForJumpHost(pid_t self, ProcessTable const &processes);

} // namespace tw::AskpassGuard
