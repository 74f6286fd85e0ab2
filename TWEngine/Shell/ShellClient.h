#pragma once

#include "TWCore/Async/Clock.h"
#include "TWEngine/Runtime/ChildProcess.h"
#include "TWEngine/Runtime/Strand.h"
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
/// Lifetime: shared, with the tasks that read and write. The client is told to end when nobody has this any more.
class ShellClient : public std::enable_shared_from_this<ShellClient> {
public:
    /// Takes responses; false: nobody wants them any more.
    using Taker = std::function<bool(std::vector<ShellReader::Frame>)>;

    /// `child` has pipes at all three ends.
    ShellClient(Strand strand, std::shared_ptr<ChildProcess> child, ShellReader reader);

    /// Behind what was written before. That it cannot be written is no failure: the loss shows on the reading side,
    /// with its reason.
    void write(std::string_view text);

    /// Hands over what comes until the client's output ends, and answers why it ended: empty if nobody said, or wants
    /// to know. Once, in a task with the token below.
    Task<std::string> listen(std::shared_ptr<Clock> clock, Taker take);

    /// Stopped by `end`.
    std::stop_token stopToken() const { return stop.get_token(); }

    /// The beginning of what it has printed and what is no response.
    std::string unframedOutput() const;

    /// What it has said on standard error up to now; of much, the end.
    std::string lastWords() const;

    /// Asks it to end, and stops listening.
    void end();

    /// Waits for its end. One that takes its time is ended.
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
    std::string errors;  ///< the end of standard error
    std::string toWrite; ///< what the writer has not taken yet
    bool isWriting = false;
    std::stop_source stop; ///< for the reading of both outputs
};

} // namespace tw
