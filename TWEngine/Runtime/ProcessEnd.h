#pragma once

namespace tw {

/// Ends the process as it is, without destructors. The clients of ssh end now too.
///
/// A thread that waits for a dead mount keeps the process, and with it every descriptor, until the kernel lets go of
/// the thread. So the pipes and sockets of the process are closed first: its children and its screen see its end at
/// once.
[[noreturn]] void endProcess(int status);

} // namespace tw
