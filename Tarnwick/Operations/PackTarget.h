#pragma once

#include "TWCore/Archives/ArchiveFormat.h"

#include <span>
#include <string>
#include <string_view>

namespace tw {

/// Where an archive is written, and as what.
struct PackTarget {
    std::string path; ///< as the user has typed it
    ArchiveFormat format = ArchiveFormat::tarGz;

    /// The path that is offered first.
    static std::string suggested(std::string_view directory, std::string_view stem, ArchiveFormat format);

    /// The path with the extension of another format in place of the one it has.
    static std::string withFormat(std::string_view path, ArchiveFormat format);

    /// What was meant by a path and a format beside it. A name that says one of the offered formats counts more.
    static PackTarget of(std::string_view path, std::span<ArchiveFormat const> offered, ArchiveFormat chosen);

    friend bool operator==(PackTarget const &, PackTarget const &) = default;
};

} // namespace tw
