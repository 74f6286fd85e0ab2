#include "Tarnwick/Preview/PreviewText.h"

#include "TWCore/Model/TextDecoding.h"

#include <algorithm>

namespace tw {

namespace {

/// Where a line of UTF-8 is cut, so that no character is.
std::size_t cutOf(std::string_view line)
{
    auto end = std::min(line.size(), PreviewText::mostLineBytes);
    while (end > 0 && end < line.size() && (static_cast<unsigned char>(line[end]) & 0xc0) == 0x80)
        --end;
    return end;
}

std::string withShortLines(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        auto const end = std::min(text.find('\n'), text.size());
        auto const line = text.substr(0, end);
        auto const cut = cutOf(line);
        result += line.substr(0, cut);
        if (cut < line.size())
            result += "…";
        if (end < text.size())
            result += '\n';
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

} // namespace

bool PreviewText::looksBinary(std::string_view bytes)
{
    return !TextDecoding::markOf(bytes) && TextDecoding::looksBinary(bytes);
}

PreviewText PreviewText::of(std::string_view bytes)
{
    if (auto const marked = TextDecoding::markOf(bytes))
        return {.text = withShortLines(TextDecoding::decodeMarked(bytes, *marked)),
                .encoding = std::string(marked->name)};
    auto const encoding = TextDecoding::detect(bytes);
    return {.text = withShortLines(TextDecoding::decodeStreaming(bytes, encoding).text),
            .encoding = std::string(TextDecoding::nameOf(encoding))};
}

} // namespace tw
