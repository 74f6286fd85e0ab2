#pragma once

#include "TWEngine/Runtime/Strand.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <unordered_set>

namespace tw {

/// Asks the user to unlock the key store: once for each host, and with one prompt at a time.
///
/// A retry must not show the prompt again: a user who has dismissed it would never get rid of it.
///
/// Threads: serialised on its strand, whose thread an open prompt blocks; `unlock` may be called from anywhere.
/// Cancellation: takes the prompt from the screen; the host may be asked for again.
class UnlockPrompts : public std::enable_shared_from_this<UnlockPrompts> {
public:
    /// Shows a prompt and blocks until it is answered, or given up. True if the password can be read.
    using Ask = std::function<bool(std::string const &host, std::stop_token giveUp)>;

    /// The threads of `ground` may block.
    UnlockPrompts(Strand ground, Ask question) : strand(std::move(ground)), ask(std::move(question)) {}

    /// True if the password of the host can be read now. False if the prompt is dismissed, or was before.
    Task<bool> unlock(std::string host);

private:
    static Task<bool> unlockHere(std::shared_ptr<UnlockPrompts> self, std::string host);

    // Constant after construction.
    Strand const strand;
    Ask const ask;

    // On the strand.
    std::unordered_set<std::string> asked; ///< bounded by the hosts that have a saved password
};

} // namespace tw
