#include "Tarnwick/Viewer/SoughtBytes.h"

#include <charconv>

namespace tw {

namespace {

/// "48 65 6c" or "48656C".
std::optional<std::string> bytesOfDigits(std::string_view typed)
{
    std::string bytes;
    while (!typed.empty()) {
        if (typed.front() == ' ') {
            typed.remove_prefix(1);
            continue;
        }
        unsigned value = 0;
        auto const pair = typed.substr(0, 2);
        auto const [stop, error] = std::from_chars(pair.data(), pair.data() + pair.size(), value, 16);
        if (pair.size() != 2 || error != std::errc() || stop != pair.data() + pair.size())
            return std::nullopt;
        bytes += static_cast<char>(value);
        typed.remove_prefix(2);
    }
    return bytes;
}

} // namespace

std::optional<std::string> soughtBytes(std::string_view typed, ViewerMode mode, TextDecoding::Encoding encoding)
{
    std::optional<std::string> bytes;
    if (mode == ViewerMode::hex)
        bytes = bytesOfDigits(typed);
    if (!bytes)
        bytes = TextDecoding::encode(typed, encoding);
    auto const fits = bytes && !bytes->empty() && bytes->size() <= mostSoughtBytes;
    return fits ? bytes : std::nullopt;
}

} // namespace tw
