#include "TWCore/Shell/Base64.h"

#include <glib.h>

namespace tw::Base64 {

namespace {

/// Four signs stand for three bytes.
constexpr std::size_t signsInGroup = 4;

/// The library decodes what it can and skips the rest; a text that was damaged on its way must not pass for another.
bool isWellFormed(std::string_view text)
{
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    auto const padding = text.ends_with("==") ? 2U : text.ends_with('=') ? 1U : 0U;
    auto const digits = text.substr(0, text.size() - padding);
    return text.size() % signsInGroup == 0 && digits.find_first_not_of(alphabet) == std::string_view::npos;
}

} // namespace

std::string encode(std::string_view bytes)
{
    std::unique_ptr<gchar, decltype(&g_free)> const text(
        g_base64_encode(reinterpret_cast<guchar const *>(bytes.data()), bytes.size()), &g_free);
    return text.get();
}

std::optional<std::string> decode(std::string_view text)
{
    if (!isWellFormed(text))
        return std::nullopt;
    std::string bytes(text);
    if (bytes.empty())
        return bytes;
    gsize length = 0;
    g_base64_decode_inplace(bytes.data(), &length);
    bytes.resize(length);
    return bytes;
}

} // namespace tw::Base64
