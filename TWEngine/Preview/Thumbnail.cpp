#include "TWEngine/Preview/Thumbnail.h"

#include "TWCore/Model/ReadError.h"
#include "TWEngine/Preview/PreviewFile.h"

#include <gio/gio.h>

#include <memory>

namespace tw::Thumbnail {

namespace {

using namespace std::string_view_literals;

/// The largest first.
constexpr std::string_view sizes[] = {"xx-large", "x-large", "large", "normal"};

using GlibText = std::unique_ptr<char, decltype(&g_free)>;

std::string taken(char *text)
{
    GlibText const owner(text, &g_free);
    return text ? std::string(text) : std::string();
}

std::uint32_t bigEndian(std::string_view bytes)
{
    std::uint32_t number = 0;
    for (auto const byte : bytes.substr(0, 4))
        number = (number << 8) | static_cast<unsigned char>(byte);
    return number;
}

std::string uriOf(std::string const &path)
{
    return taken(g_filename_to_uri(path.c_str(), nullptr, nullptr));
}

/// Programs of Qt compress an address of usual length. Then the name of the file, which is made of it, has to do.
bool isOf(std::string_view png, std::string_view uri, std::int64_t mtime)
{
    auto const said = textIn(png, "Thumb::URI");
    return (!said || *said == uri) && textIn(png, "Thumb::MTime") == std::to_string(mtime);
}

} // namespace

std::optional<std::string_view> textIn(std::string_view png, std::string_view key)
{
    constexpr auto signature = "\x89PNG\r\n\x1a\n"sv;
    constexpr std::size_t around = 12; // length, kind and check sum of a chunk
    if (!png.starts_with(signature))
        return std::nullopt;
    png.remove_prefix(signature.size());
    while (png.size() >= around) {
        std::size_t const length = bigEndian(png);
        auto const kind = png.substr(4, 4);
        if (kind == "IDAT" || length > png.size() - around)
            return std::nullopt;
        auto const content = png.substr(8, length);
        if (kind == "tEXt" && content.starts_with(key) && content.substr(key.size()).starts_with('\0'))
            return content.substr(key.size() + 1);
        png.remove_prefix(around + length);
    }
    return std::nullopt;
}

FileDescriptor find(std::string const &folder, std::string const &path, std::int64_t mtime)
{
    auto const uri = uriOf(path);
    if (uri.empty())
        return FileDescriptor();
    auto const name = taken(g_compute_checksum_for_string(G_CHECKSUM_MD5, uri.c_str(), -1));
    for (auto const size : sizes) {
        try {
            auto file = PreviewFile::open(folder + "/" + std::string(size) + "/" + name + ".png");
            if (file.descriptor && isOf(file.beginning, uri, mtime))
                return std::move(file.descriptor);
        } catch (ReadError const &) {
            continue; // usually there is none
        }
    }
    return FileDescriptor();
}

Question questionAbout(std::string const &path, std::string_view beginning)
{
    gboolean isUncertain = FALSE;
    auto const type = taken(g_content_type_guess(path.c_str(), reinterpret_cast<guchar const *>(beginning.data()),
                                                 beginning.size(), &isUncertain));
    if (type.empty() || g_content_type_is_unknown(type.c_str()) != FALSE)
        return {.uri = uriOf(path), .mimeType = {}};
    return {.uri = uriOf(path), .mimeType = taken(g_content_type_get_mime_type(type.c_str()))};
}

} // namespace tw::Thumbnail
