// TextDecoding over any bytes in any pieces.
//
// The first byte of an input says how the rest is cut.

#include "TWCore/Check.h"
#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/TextDecoding.h"

#include <algorithm>
#include <cstdint>
#include <random>

namespace tw {
namespace {

std::string decodedInPieces(std::string_view bytes, TextDecoding::Encoding encoding, std::uint32_t seed)
{
    constexpr std::size_t mostHeld = 3;
    std::mt19937 random(seed);
    std::string text;
    std::string held;
    while (!bytes.empty()) {
        auto const size = std::min<std::size_t>(1 + random() % (1 + seed), bytes.size());
        auto decoded = TextDecoding::decodeStreaming(held + std::string(bytes.substr(0, size)), encoding);
        check(decoded.held.size() <= mostHeld, "more is held back than a character has");
        text += decoded.text;
        held = std::move(decoded.held);
        bytes.remove_prefix(size);
    }
    return text + TextDecoding::decode(held, encoding);
}

void checkText(std::string_view bytes, std::uint32_t seed)
{
    for (auto const encoding : TextDecoding::encodings) {
        auto const whole = TextDecoding::decode(bytes, encoding);
        check(repaired(whole) == whole, "a text is not UTF-8");
        check(decodedInPieces(bytes, encoding, seed) == whole, "a text depends on the pieces");
    }
    auto const detected = TextDecoding::detect(bytes);
    check(std::ranges::find(TextDecoding::encodings, detected) != TextDecoding::encodings.end(), "no encoding");
    if (auto const wide = TextDecoding::detectWide(bytes))
        check(TextDecoding::unitBytesOf(*wide) > 1, "not a wide encoding");
    auto const dump = TextDecoding::hexDump(bytes, 0);
    check(static_cast<std::size_t>(std::ranges::count(dump, '\n')) == (bytes.size() + 15) / 16, "a line is missing");
    if (auto const marked = TextDecoding::markOf(bytes))
        check(TextDecoding::decodeMarked(bytes, *marked).size() <= 3 * bytes.size(), "a text is longer than its bytes");
}

} // namespace
} // namespace tw

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size > 0)
        tw::checkText({reinterpret_cast<char const *>(data) + 1, size - 1}, data[0]);
    return 0;
}
