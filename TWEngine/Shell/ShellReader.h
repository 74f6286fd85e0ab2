#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// Finds the responses in what a session's shell prints.
///
/// On the wire a response is its payload, byte for byte, and behind it a marker that only this session can produce:
/// "@@TW", the nonce, ":", the request's id, ":", the status, "@@", and a line feed. There is no length and no
/// escaping; that a file's content is not taken for a marker rests on the nonce, 64 random bits that no file can know.
///
/// A pure machine: bytes in, frames out, however the bytes are cut into pieces. What was searched is not searched
/// again, so the cost is one pass over the stream.
///
/// Threads: used by one at a time.
class ShellReader {
public:
    struct Frame {
        std::uint64_t id = 0;    ///< of the request; 0 is the handshake's, and what a marker without an id reads as
        std::int32_t status = 0; ///< of the command on the host; 0 where the marker has none
        std::string payload;
        bool truncated = false; ///< the payload has reached the budget, at which the host stops listing
        /// The payload's first byte is the line feed of the marker before it, which came too late to be taken with it.
        bool beginsWithLateLineFeed = false;

        friend bool operator==(Frame const &, Frame const &) = default;
    };

    /// `nonce` is the session's. `budget` is the number of bytes at which a listing is cut on the host.
    ShellReader(std::string_view nonce, std::size_t budget);

    /// The responses that `bytes` completes, in order.
    std::vector<Frame> ingest(std::string_view bytes);

    /// What waits for the end of its response: the beginning of its payload, without the late line feed.
    std::string_view waiting() const noexcept
    {
        auto const hasLateLineFeed = lineFeedIsLate && buffer.starts_with('\n');
        return std::string_view(buffer).substr(hasLateLineFeed ? 1 : 0);
    }

private:
    std::optional<Frame> takeFrame();
    bool findMarker();
    std::optional<std::size_t> findMarkerEnd();
    void forgetTaken();

    std::string const marker;
    std::size_t const budget;

    std::string buffer;                     ///< what has arrived
    std::size_t taken = 0;                  ///< before this all belongs to responses that were handed out
    bool lineFeedIsLate = false;            ///< that of the last marker has not arrived
    std::optional<std::size_t> markerStart; ///< of the marker that was found and whose end has not arrived
    std::size_t scanFrom = 0;               ///< before this there is nothing of what is looked for
};

} // namespace tw
