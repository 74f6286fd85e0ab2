#include "TWEngine/Preview/Thumbnail.h"

#include "TWCore/Model/ReadError.h"
#include "TWEngine/Preview/PreviewFile.h"

#include <glib.h>

#include <memory>

namespace tw::Thumbnail {

namespace {

using namespace std::string_view_literals;

/// The largest first.
constexpr std::string_view sizes[] = {"xx-large", "x-large", "large", "normal"};

using GlibText = std::unique_ptr<char, decltype(&g_free)>;

std::uint32_t bigEndian(std::string_view bytes)
{
    std::uint32_t number = 0;
    for (auto const byte : bytes.substr(0, 4))
        number = (number << 8) | static_cast<unsigned char>(byte);
    return number;
}

bool isOf(std::string_view png, std::string_view uri, std::int64_t mtime)
{
    return textIn(png, "Thumb::URI") == uri && textIn(png, "Thumb::MTime") == std::to_string(mtime);
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
    GlibText const uri(g_filename_to_uri(path.c_str(), nullptr, nullptr), &g_free);
    if (!uri)
        return FileDescriptor();
    GlibText const name(g_compute_checksum_for_string(G_CHECKSUM_MD5, uri.get(), -1), &g_free);
    for (auto const size : sizes) {
        try {
            auto file = PreviewFile::open(folder + "/" + std::string(size) + "/" + name.get() + ".png");
            if (file.descriptor && isOf(file.beginning, uri.get(), mtime))
                return std::move(file.descriptor);
        } catch (ReadError const &) {
            continue; // usually there is none
        }
    }
    return FileDescriptor();
}

} // namespace tw::Thumbnail
