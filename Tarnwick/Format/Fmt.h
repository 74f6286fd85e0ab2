#pragma once

#include "TWCore/Model/Entry.h"

#include <cstdint>
#include <string>
#include <string_view>

/// How sizes, dates, modes and names read on screen. Every row that is painted goes through here.
///
/// All functions are total. Threads: main context only (the date cache is not locked).
namespace tw::Fmt {

/// "<DIR>", "<LNK>", plain bytes below 1024, else "1.5K", "10K", "3.2G": one decimal below 10. `bytes` as reported.
std::string size(std::int64_t bytes, EntryKind kind);

/// "yyyy-MM-dd HH:mm" in the machine's time zone, empty for 0 and for a time that no calendar reaches. `seconds` since
/// 1970-01-01 UTC. The reference is good until the next call.
std::string const &date(std::int64_t seconds);

/// "drwxr-xr-x": the kind's letter and the three triplets. The set-id and sticky bits are not shown.
std::string mode(std::uint16_t bits, EntryKind kind);

struct SplitName {
    std::string_view base;
    std::string_view extension; ///< without the dot; empty if there is none

    friend bool operator==(SplitName const &, SplitName const &) = default;
};

enum class IsDirectory : bool { no, yes };

/// The extension is what stands behind the last dot, if that is 1 to 12 characters and the dot is not the first.
SplitName splitExtension(std::string_view name, IsDirectory isDirectory);

/// The key under which an icon is cached: the extension in lower case, or for what has none the word "dir", "link",
/// "special" or "file" behind a NUL byte, so that no extension can collide with it.
std::string iconKey(std::string_view name, EntryKind kind);

} // namespace tw::Fmt
