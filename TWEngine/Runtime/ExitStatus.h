#pragma once

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

    friend bool operator==(ExitStatus const &, ExitStatus const &) = default;
};

} // namespace tw
