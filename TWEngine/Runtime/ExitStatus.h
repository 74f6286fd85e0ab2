#pragma once

#include <string>

namespace tw {

/// How a child process ended.
struct ExitStatus {
    enum class Cause {
        exited, ///< by itself
        killed, ///< by a signal
        lost    ///< unknown: other code of this process has collected the child
    };

    Cause cause = Cause::lost;
    int number = 0; ///< the exit code, or the signal

    bool isSuccess() const noexcept { return cause == Cause::exited && number == 0; }

    /// "exit 2" or "ended by signal 9": the reason for a failure of a program that has said none.
    std::string text() const;

    friend bool operator==(ExitStatus const &, ExitStatus const &) = default;
};

} // namespace tw
