#include "TWEngine/Shell/ShellReader.h"

#include <charconv>
#include <cstring>
#include <utility>

namespace tw {

namespace {

constexpr std::string_view markerEnd = "@@";

/// Like std::string_view::find, at the speed of the C library's search, which reads many bytes at once.
std::size_t findFrom(std::string_view text, std::string_view wanted, std::size_t from)
{
    auto const *const found =
        static_cast<char const *>(memmem(text.data() + from, text.size() - from, wanted.data(), wanted.size()));
    return found ? static_cast<std::size_t>(found - text.data()) : std::string_view::npos;
}

/// The whole text as a decimal number, or 0.
template <class Number>
Number decimalOrZero(std::string_view text)
{
    Number number = 0;
    auto const *const end = text.data() + text.size();
    auto const parsed = std::from_chars(text.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end ? number : 0;
}

/// Takes the next piece that is not empty off the front of `text`; pieces are separated by ":".
std::string_view takePiece(std::string_view &text)
{
    auto const start = std::min(text.find_first_not_of(':'), text.size());
    auto const length = std::min(text.find(':', start), text.size()) - start;
    auto const piece = text.substr(start, length);
    text.remove_prefix(start + length);
    return piece;
}

} // namespace

ShellReader::ShellReader(std::string_view nonce, std::size_t responseBudget)
    : marker("@@TW" + std::string(nonce) + ":"), budget(responseBudget)
{
}

std::vector<ShellReader::Frame> ShellReader::ingest(std::string_view bytes)
{
    buffer += bytes;
    std::vector<Frame> frames;
    while (auto frame = takeFrame())
        frames.push_back(std::move(*frame));
    forgetTaken();
    return frames;
}

std::optional<ShellReader::Frame> ShellReader::takeFrame()
{
    if (!findMarker())
        return std::nullopt;
    auto const end = findMarkerEnd();
    if (!end)
        return std::nullopt;

    auto const start = *markerStart;
    auto const fields = start + marker.size();
    auto text = std::string_view(buffer).substr(fields, *end - fields);
    Frame frame;
    frame.id = decimalOrZero<std::uint64_t>(takePiece(text));
    frame.status = decimalOrZero<std::int32_t>(takePiece(text));
    // Copied, so that a payload, which may be kept for long, has no more memory than it has bytes.
    frame.payload = buffer.substr(taken, start - taken);
    frame.truncated = frame.payload.size() >= budget;

    frame.beginsWithLateLineFeed = std::exchange(lineFeedIsLate, false) && frame.payload.starts_with('\n');

    taken = *end + markerEnd.size();
    if (taken == buffer.size())
        lineFeedIsLate = true;
    else if (buffer[taken] == '\n')
        ++taken;
    markerStart.reset();
    scanFrom = taken;
    return frame;
}

/// False: there is no whole one yet.
bool ShellReader::findMarker()
{
    if (markerStart)
        return true;
    auto const found = findFrom(buffer, marker, scanFrom);
    if (found == std::string::npos) {
        // The marker's first part may be the last that has arrived.
        if (buffer.size() >= scanFrom + marker.size())
            scanFrom = buffer.size() - marker.size() + 1;
        return false;
    }
    markerStart = found;
    scanFrom = found + marker.size();
    return true;
}

std::optional<std::size_t> ShellReader::findMarkerEnd()
{
    auto const found = findFrom(buffer, markerEnd, scanFrom);
    if (found != std::string::npos)
        return found;
    if (buffer.size() >= scanFrom + markerEnd.size())
        scanFrom = buffer.size() - markerEnd.size() + 1;
    return std::nullopt;
}

void ShellReader::forgetTaken()
{
    buffer.erase(0, taken);
    scanFrom -= taken;
    if (markerStart)
        *markerStart -= taken;
    taken = 0;
    // A long response is rare; the next one is short, and waits for in a small buffer as well.
    constexpr std::size_t keptCapacity = 256U << 10U;
    if (buffer.capacity() > keptCapacity && buffer.size() <= keptCapacity / 2)
        buffer.shrink_to_fit();
}

} // namespace tw
