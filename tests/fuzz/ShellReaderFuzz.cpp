// ShellReader over any bytes in any pieces, held against the plainest reading of the same stream.
//
// The first byte of an input says how the rest is cut.

#include "TWCore/Check.h"
#include "TWEngine/Shell/ShellReader.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <random>

namespace tw {
namespace {

using Frame = ShellReader::Frame;

constexpr std::string_view nonce = "0123456789abcdef";
constexpr std::size_t budget = 32;

/// The fields of a marker that are not empty.
std::vector<std::string> pieces(std::string const &fields)
{
    std::vector<std::string> result;
    std::string piece;
    for (auto const character : fields + ':') {
        if (character != ':') {
            piece += character;
        } else if (!piece.empty()) {
            result.push_back(piece);
            piece.clear();
        }
    }
    return result;
}

bool isDigits(std::string const &text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

std::uint64_t idOf(std::string const &text)
{
    errno = 0;
    auto const id = isDigits(text) ? std::strtoull(text.c_str(), nullptr, 10) : 0;
    return errno == 0 ? id : 0;
}

std::int32_t statusOf(std::string const &text)
{
    bool const isNumber = isDigits(text.starts_with('-') ? text.substr(1) : text);
    auto const status = isNumber ? std::strtoll(text.c_str(), nullptr, 10) : 0; // the nearest if it is too large
    return status == static_cast<std::int32_t>(status) ? static_cast<std::int32_t>(status) : 0;
}

/// The responses in a stream, and in `rest` what follows the last of them.
std::vector<Frame> framesOf(std::string stream, std::string &rest)
{
    auto const marker = "@@TW" + std::string(nonce) + ":";
    std::vector<Frame> frames;
    for (;;) {
        auto const start = stream.find(marker);
        auto const end = start == std::string::npos ? start : stream.find("@@", start + marker.size());
        if (end == std::string::npos)
            break;
        auto const fields = pieces(stream.substr(start + marker.size(), end - start - marker.size()));
        Frame frame;
        if (!fields.empty())
            frame.id = idOf(fields[0]);
        if (fields.size() > 1)
            frame.status = statusOf(fields[1]);
        frame.payload = stream.substr(0, start);
        frame.truncated = start >= budget;
        frames.push_back(frame);
        stream.erase(0, end + 2);
        if (stream.starts_with('\n'))
            stream.erase(0, 1);
    }
    rest = stream;
    return frames;
}

void checkAtOnce(std::string const &stream)
{
    std::string rest;
    auto const expected = framesOf(stream, rest);
    ShellReader reader(nonce, budget);
    check(reader.ingest(stream) == expected, "the responses are others");
    check(reader.waiting().size() == rest.size(), "more or less is left than was not part of a response");
}

void checkInPieces(std::string_view stream, std::uint32_t seed)
{
    std::string ignored;
    auto const expected = framesOf(std::string(stream), ignored);
    std::mt19937 random(seed);
    ShellReader reader(nonce, budget);
    std::vector<Frame> frames;
    while (!stream.empty()) {
        auto const size = std::min<std::size_t>(1 + random() % (1 + seed), stream.size());
        std::ranges::move(reader.ingest(stream.substr(0, size)), std::back_inserter(frames));
        stream.remove_prefix(size);
    }
    check(frames.size() == expected.size(), "in pieces there are more or fewer responses");
    for (std::size_t index = 0; index < frames.size(); ++index) {
        check(frames[index].id == expected[index].id, "an id depends on the pieces");
        check(frames[index].status == expected[index].status, "a status depends on the pieces");
        // A line feed behind a marker is part of it only if it comes with it.
        auto const &payload = expected[index].payload;
        check(frames[index].payload == payload || frames[index].payload == '\n' + payload,
              "a payload depends on the pieces");
    }
}

} // namespace
} // namespace tw

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size > 0) {
        std::string const stream(reinterpret_cast<char const *>(data) + 1, size - 1);
        tw::checkAtOnce(stream);
        tw::checkInPieces(stream, data[0]);
    }
    return 0;
}
