#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tw {

/// Which session with a host carries a command. A session answers strictly in order.
enum class CommandSession {
    interactive, ///< a person waits for the answer, and the command takes less than a second
    background,  ///< nobody waits for the answer
    work,        ///< the command changes something on the host, or may take longer
    longWork     ///< the same, and short work must not wait behind it: it may itself wait for other long work
};

/// What happens to a command whose connection was lost after it was sent.
enum class CommandEffect {
    none,   ///< it is sent again over a new connection
    changes ///< it is never sent twice: the first time may have changed the host
};

/// What happens to a command if the host is not up, or is lost meanwhile.
enum class CommandOnLoss {
    connects, ///< the host is connected again, quietly
    fails     ///< nobody wants the answer so much; a host that is away is not disturbed
};

/// A command line in the language of a host's shell, and how to run it.
struct HostCommand {
    std::string text;
    CommandSession session = CommandSession::interactive;
    CommandEffect effect = CommandEffect::none;
    CommandOnLoss onLoss = CommandOnLoss::connects;
    /// How long a command that changes nothing may take; without a limit, the default of the session holds. A late
    /// answer of one that changes something counts: the host is as it says.
    std::optional<std::chrono::duration<double>> limit = {};
};

/// What a command on a host printed, and how it ended.
struct CommandResult {
    std::string output; ///< standard output and error, UTF-8
    std::int32_t status = 0;
};

} // namespace tw
