#include "Tarnwick/Preview/PreviewKind.h"

#include "Tarnwick/Format/Fmt.h"
#include "Tarnwick/Preview/PreviewText.h"
#include "Tarnwick/Table/IconKind.h"

#include <algorithm>

namespace tw {

namespace {

using namespace std::string_view_literals;

struct Signature {
    std::size_t offset;
    std::string_view bytes;
    char const *format; ///< of Qt's; null: nothing decodes it
    char const *title;
};

// The longer ones before those that they begin with.
constexpr Signature signatures[] = {
    {0, "\x89PNG\r\n\x1a\n"sv, "png", "PNG picture"},
    {0, "\xff\xd8\xff"sv, "jpeg", "JPEG picture"},
    {0, "GIF87a"sv, "gif", "GIF picture"},
    {0, "GIF89a"sv, "gif", "GIF picture"},
    {8, "WEBP"sv, "webp", "WebP picture"},
    {0, "II*\0"sv, "tiff", "TIFF picture"},
    {0, "MM\0*"sv, "tiff", "TIFF picture"},
    {0, "\0\0\1\0"sv, "ico", "icon"},
    {4, "ftypavif"sv, "avif", "AVIF picture"},
    {4, "ftypheic"sv, "heic", "HEIC picture"},
    {4, "ftypmif1"sv, "heif", "HEIF picture"},
    {0, "\xff\x0a"sv, "jxl", "JPEG XL picture"},
    {0, "\0\0\0\x0cJXL "sv, "jxl", "JPEG XL picture"},
    {0, "\0\0\0\x0cjP  "sv, "jp2", "JPEG 2000 picture"},
    {0, "P4\n"sv, "pbm", "PBM picture"},
    {0, "P5\n"sv, "pgm", "PGM picture"},
    {0, "P6\n"sv, "ppm", "PPM picture"},
    {0, "icns"sv, "icns", "icon"},
    {0, "\x8aMNG\r\n\x1a\n"sv, "mng", "MNG picture"},
    {0, "/* XPM */"sv, "xpm", "XPM picture"},
    {0, "%PDF-"sv, "pdf", "PDF document"},
    {0, "PK\3\4"sv, nullptr, "ZIP archive"},
    {0, "7z\xbc\xaf\x27\x1c"sv, nullptr, "7-Zip archive"},
    {0, "\x1f\x8b"sv, nullptr, "gzip archive"},
    {0, "BZh"sv, nullptr, "bzip2 archive"},
    {0,
     "\xfd"
     "7zXZ\0"sv,
     nullptr, "xz archive"},
    {0, "\x28\xb5\x2f\xfd"sv, nullptr, "Zstandard archive"},
    {0, "Rar!\x1a\x07"sv, nullptr, "RAR archive"},
    {257, "ustar"sv, nullptr, "tar archive"},
    {0,
     "\x7f"
     "ELF"sv,
     nullptr, "program"},
};

char const *titleOf(IconKind kind)
{
    switch (kind) {
    case IconKind::image:
        return "picture";
    case IconKind::audio:
        return "sound";
    case IconKind::video:
        return "video";
    case IconKind::archive:
        return "archive";
    case IconKind::document:
        return "document";
    case IconKind::spreadsheet:
        return "spreadsheet";
    case IconKind::executable:
        return "program";
    default:
        return "file";
    }
}

/// Sizes of a bitmap's header; two letters alone begin many a text.
bool isBitmap(std::string_view beginning)
{
    return beginning.starts_with("BM") && beginning.size() > 18 && beginning.substr(15, 3) == "\0\0\0"sv;
}

/// An HTML page may have a drawing in it, but does not begin with a declaration, a comment or the drawing itself.
bool isDrawing(std::string_view text)
{
    constexpr std::size_t mostBefore = 4096; // comments and a document type before the root
    text = text.substr(0, mostBefore);
    if (text.starts_with("\xef\xbb\xbf"))
        text.remove_prefix(3);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    auto const root = text.find("<svg");
    return root == 0 || (root != std::string_view::npos &&
                         (text.starts_with("<?xml") || text.starts_with("<!--") || text.starts_with("<!DOCTYPE svg")));
}

} // namespace

PreviewKind PreviewKind::of(std::string_view beginning, std::string_view name)
{
    auto const icon = iconKindOf(Fmt::iconKey(name, EntryKind::file));
    for (auto const &each : signatures) {
        if (beginning.size() > each.offset && beginning.substr(each.offset).starts_with(each.bytes))
            return {.look = each.format ? Look::picture : Look::other,
                    .format = each.format ? each.format : "",
                    .title = each.title};
    }
    if (isBitmap(beginning))
        return {.look = Look::picture, .format = "bmp", .title = "BMP picture"};
    if (PreviewText::looksBinary(beginning)) {
        // The one format that has nothing of its own at its beginning.
        if (name.ends_with(".tga") || name.ends_with(".TGA"))
            return {.look = Look::picture, .format = "tga", .title = "TGA picture"};
        return {.look = Look::other, .title = titleOf(icon)};
    }
    if (isDrawing(beginning))
        return {.look = Look::picture, .format = "svg", .title = "SVG drawing"};
    return {.look = Look::text, .title = "text"};
}

} // namespace tw
