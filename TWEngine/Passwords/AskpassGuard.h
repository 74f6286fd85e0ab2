#pragma once

#include "TWEngine/Passwords/ProcessTable.h"

/// Who gets a saved password: an ssh that this very program has started, and nobody else.
///
/// Anybody can set a variable and run this program, so that it looks at the processes above it. It keeps a password
/// from other programs that take ours for a tool; one that may read the memory of ours is not kept from anything.
namespace tw::AskpassGuard {

/// How far up is looked: a shell or two may stand between ssh and the program.
inline constexpr int mostSteps = 6;

/// Above this process is ssh or sftp, and above that this program. What cannot be read is passed over.
bool calledByOurOwnSSH();

/// The same for the process `self` in a table.
bool calledByOurOwnSSH(pid_t self, ProcessTable const &processes);

/// The ssh that asks was started by another ssh, to get to a host in between. The saved password is that of the host
/// behind, and must not be told to the one in between.
bool calledForJumpHost(pid_t self, ProcessTable const &processes);

} // namespace tw::AskpassGuard
