#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/Strand.h"
#include "TWEngine/Shell/ClientWords.h"
#include "TWEngine/Shell/ShellReader.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// One run of the program that a session talks through: a queue into it, the responses that come out of it, and its
/// last words.
///
/// Threads: all of it on the strand.
/// Lifetime: shared with the tasks that read and write. The program is asked to end when the last owner goes.
class ShellClient : public std::enable_shared_from_this<ShellClient> {
public:
    /// Takes responses. False if they are no longer wanted.
    using Taker = std::function<bool(std::vector<ShellReader::Frame>)>;

    /// `child` has pipes at all three ends.
    ShellClient(Strand strand, std::shared_ptr<ChildProcess> child, ShellReader reader,
                std::unique_ptr<ClientWords> words);

    /// Queues `text` behind earlier writes. A failed write is ignored: the loss shows on the reading side, with its
    /// reason.
    void write(std::string_view text);

    /// Passes responses to `take` until the program's output ends. Returns the reason, or an empty text if there is
    /// none or `take` refused. Called once, in a task with the token below.
    Task<std::string> listen(std::shared_ptr<Clock> clock, Taker take);

    /// Stopped by `end`.
    std::stop_token stopToken() const { return stop.get_token(); }

    /// What has come of the next response. Valid until more is read.
    std::string_view waiting() const noexcept { return reader.waiting(); }

    /// The beginning of what it has printed and what is no response.
    std::string unframedOutput() const;

    /// What is known of its way to the host so far; words trimmed and repaired.
    ClientReport report() const;

    /// From now on `end` does not reach the processes that the program has started, such as the ssh of ProxyJump: a
    /// shared connection goes through them. Before this call `end` ends them too: on a silent line they would stay.
    void keepHelpers();

    /// Asks it to end, and stops listening.
    void end();

    /// Waits for its end, and kills it if that takes too long.
    Task<void> endSurely(std::shared_ptr<Clock> clock);

private:
    using Self = std::shared_ptr<ShellClient>;

    static Task<void> writeQueued(Self self);
    static Task<std::string> listenHere(Self self, std::shared_ptr<Clock> clock, Taker take);
    static Task<void> listenToErrors(Self self);
    static Task<void> endSurelyHere(Self self, std::shared_ptr<Clock> clock);

    Strand const strand;
    std::shared_ptr<ChildProcess> const child;

    // On the strand.
    ShellReader reader;
    std::unique_ptr<ClientWords> const words;
    std::string toWrite; ///< what the writer has not taken yet
    bool isWriting = false;
    std::stop_source stop; ///< for the reading of both outputs
};

} // namespace tw
