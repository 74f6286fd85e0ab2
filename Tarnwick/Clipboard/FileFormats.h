#pragma once

#include "Tarnwick/Operations/FileDrag.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The formats in which files lie on the clipboard and are dragged, as bytes.
///
/// Names travel as the bytes that they are, also those that are no UTF-8. What is read may come from any program: it
/// is bounded and checked, and is never trusted to be a list of files.
namespace tw::FileFormats {

/// A list of addresses: the format of every program.
inline constexpr std::string_view uriList = "text/uri-list";

/// "copy" or "cut" and the addresses: Nautilus, Nemo, Caja, Thunar and others.
inline constexpr std::string_view gnomeFiles = "x-special/gnome-copied-files";

/// "1" beside a list of addresses that were cut: Dolphin and others.
inline constexpr std::string_view kdeCut = "application/x-kde-cutselection";

inline constexpr std::string_view plainText = "text/plain";

/// Larger data of another program is not looked at. A hundred thousand files with long paths have a fifth of that.
inline constexpr std::size_t mostBytes = std::size_t{64} * 1024 * 1024;

/// Of the names of one list.
inline constexpr std::size_t mostNames = 1'000'000;

/// All formats, the private one first.
std::span<std::string_view const> all();

/// The files in one of the formats; nothing for another type. Files of a host have "sftp://" addresses, for programs
/// that can read them.
std::optional<std::string> render(FileDrag const &files, std::string_view type);

/// Files of any folders of this machine as a list of addresses.
std::string renderUriList(std::span<std::string const> paths);

/// Files that were found in some formats.
struct Offered {
    std::optional<FileDrag> own = {};    ///< from a window of this program
    std::vector<std::string> paths = {}; ///< otherwise: absolute, of this machine
    bool isMove = false;                 ///< they were cut

    friend bool operator==(Offered const &, Offered const &) = default;
};

/// The bytes of a format; nothing if it is not offered. Asked for as few formats as possible: another program takes its
/// time to answer.
using Source = std::function<std::optional<std::string>(std::string_view type)>;

/// Nothing: there are no files of this machine and no private format, or it is damaged.
std::optional<Offered> read(Source const &source);

} // namespace tw::FileFormats
