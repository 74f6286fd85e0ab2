#include "Tarnwick/Table/IconKind.h"

#include "Tarnwick/Format/Fmt.h"

#include <algorithm>
#include <array>
#include <span>

namespace tw {

namespace {

using namespace std::string_view_literals;

// Behind a NUL byte, as the keys of Fmt for what has no extension.
constexpr std::string_view parentKey = "\0parent"sv;
constexpr std::string_view executableKey = "\0executable"sv;
constexpr std::string_view plainFileKey = "\0file"sv;

constexpr std::uint16_t anyExecuteBit = 0111;

constexpr std::array textExtensions{"adoc"sv, "cfg"sv, "conf"sv, "csv"sv, "desktop"sv, "diff"sv, "ini"sv, "json"sv,
                                    "log"sv,  "md"sv,  "nfo"sv,  "org"sv, "patch"sv,   "rst"sv,  "srt"sv, "tex"sv,
                                    "toml"sv, "tsv"sv, "txt"sv,  "xml"sv, "yaml"sv,    "yml"sv};
constexpr std::array codeExtensions{
    "asm"sv, "bash"sv, "c"sv,     "cc"sv,  "cmake"sv, "cpp"sv, "cs"sv,  "css"sv,  "cxx"sv,   "dart"sv, "el"sv,
    "ex"sv,  "go"sv,   "h"sv,     "hh"sv,  "hpp"sv,   "hs"sv,  "htm"sv, "html"sv, "hxx"sv,   "java"sv, "jl"sv,
    "js"sv,  "jsx"sv,  "kt"sv,    "lua"sv, "m"sv,     "mk"sv,  "ml"sv,  "mm"sv,   "nim"sv,   "php"sv,  "pl"sv,
    "pm"sv,  "ps1"sv,  "py"sv,    "qml"sv, "r"sv,     "rb"sv,  "rs"sv,  "s"sv,    "scala"sv, "scm"sv,  "scss"sv,
    "sh"sv,  "sql"sv,  "swift"sv, "tcl"sv, "ts"sv,    "tsx"sv, "vim"sv, "vue"sv,  "zig"sv,   "zsh"sv};
constexpr std::array imageExtensions{"avif"sv, "bmp"sv,  "gif"sv,  "heic"sv, "ico"sv, "jpeg"sv, "jpg"sv,
                                     "jxl"sv,  "png"sv,  "psd"sv,  "raw"sv,  "svg"sv, "svgz"sv, "tga"sv,
                                     "tif"sv,  "tiff"sv, "webp"sv, "xcf"sv,  "xpm"sv};
constexpr std::array audioExtensions{"aac"sv, "aiff"sv, "flac"sv, "m3u"sv,  "m4a"sv, "mid"sv, "mka"sv,
                                     "mp3"sv, "oga"sv,  "ogg"sv,  "opus"sv, "wav"sv, "wma"sv};
constexpr std::array videoExtensions{"3gp"sv, "avi"sv,  "flv"sv, "m4v"sv, "mkv"sv,  "mov"sv,
                                     "mp4"sv, "mpeg"sv, "mpg"sv, "ogv"sv, "webm"sv, "wmv"sv};
constexpr std::array archiveExtensions{"7z"sv,  "apk"sv, "ar"sv,  "bz2"sv, "cab"sv, "cpio"sv, "deb"sv, "dmg"sv, "gz"sv,
                                       "img"sv, "iso"sv, "jar"sv, "lz"sv,  "lz4"sv, "lzma"sv, "rar"sv, "rpm"sv, "tar"sv,
                                       "tbz"sv, "tgz"sv, "txz"sv, "whl"sv, "xz"sv,  "zip"sv,  "zst"sv};
constexpr std::array documentExtensions{"djvu"sv, "doc"sv, "docx"sv, "dvi"sv,  "epub"sv, "mobi"sv, "odp"sv,
                                        "odt"sv,  "pdf"sv, "ppt"sv,  "pptx"sv, "ps"sv,   "rtf"sv};
constexpr std::array spreadsheetExtensions{"gnumeric"sv, "ods"sv, "xls"sv, "xlsm"sv, "xlsx"sv};
constexpr std::array executableExtensions{"appimage"sv, "bat"sv, "bin"sv, "cmd"sv, "com"sv, "dll"sv,
                                          "exe"sv,      "msi"sv, "out"sv, "run"sv, "so"sv};

struct Group {
    std::span<std::string_view const> extensions;
    IconKind kind;
};

constexpr std::array groups{
    Group{textExtensions, IconKind::text},
    Group{codeExtensions, IconKind::code},
    Group{imageExtensions, IconKind::image},
    Group{audioExtensions, IconKind::audio},
    Group{videoExtensions, IconKind::video},
    Group{archiveExtensions, IconKind::archive},
    Group{documentExtensions, IconKind::document},
    Group{spreadsheetExtensions, IconKind::spreadsheet},
    Group{executableExtensions, IconKind::executable},
};

} // namespace

std::string_view iconName(IconKind kind)
{
    switch (kind) {
    case IconKind::parent:
        return "parent";
    case IconKind::folder:
        return "folder";
    case IconKind::link:
        return "link";
    case IconKind::special:
        return "special";
    case IconKind::file:
        return "file";
    case IconKind::text:
        return "text";
    case IconKind::code:
        return "code";
    case IconKind::image:
        return "image";
    case IconKind::audio:
        return "audio";
    case IconKind::video:
        return "video";
    case IconKind::archive:
        return "archive";
    case IconKind::document:
        return "document";
    case IconKind::spreadsheet:
        return "spreadsheet";
    case IconKind::executable:
        return "executable";
    }
    return "file";
}

std::string paneIconKey(PaneModel const &model, int row)
{
    auto const *const entry = model.entry(row);
    if (!entry)
        return std::string(parentKey);
    auto key = Fmt::iconKey(model.name(row), entry->kind);
    if (key == plainFileKey && (entry->mode & anyExecuteBit) != 0)
        return std::string(executableKey);
    return key;
}

IconKind iconKindOf(std::string_view iconKey)
{
    if (iconKey == parentKey)
        return IconKind::parent;
    if (iconKey == "\0dir"sv)
        return IconKind::folder;
    if (iconKey == "\0link"sv)
        return IconKind::link;
    if (iconKey == "\0special"sv)
        return IconKind::special;
    if (iconKey == executableKey)
        return IconKind::executable;
    for (auto const &[extensions, kind] : groups) {
        if (std::ranges::find(extensions, iconKey) != extensions.end())
            return kind;
    }
    return IconKind::file;
}

} // namespace tw
