#pragma once

#include <chrono>

namespace tw {

/// From now on the process has `remaining` to end by itself; then it is ended as it is, with success.
///
/// For the way out of `main`, when everything that must be kept is on disk: a system call on a dead network mount
/// does not return, and joining its thread must not keep a program around that the user has closed.
///
/// Threads: to be called once, on the main thread. Takes SIGALRM.
void setExitDeadline(std::chrono::milliseconds remaining);

} // namespace tw
