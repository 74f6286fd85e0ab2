#pragma once

#include "TWCore/Archives/ArchiveCapability.h"

#include <string>

namespace tw {

/// The archive programs of this machine: full paths, empty where a program is missing.
struct ArchiveTools {
    enum class TarKind {
        gnu,
        bsd,
        other ///< such as that of busybox, which takes the common options only
    };

    std::string tar = {};
    TarKind tarKind = TarKind::other;
    std::string bsdtar = {}; ///< the same program as `tar` where that is bsdtar
    std::string zip = {};
    std::string unzip = {};
    std::string sevenZip = {};

    /// What these programs can do together. Wherever a machine is said to use bsdtar, `bsdtar` is the one to call.
    ArchiveCapability capability() const
    {
        ArchiveCapability can{.usesBSDTar = !bsdtar.empty(), .hasZipTools = !zip.empty() && !unzip.empty()};
        if (!sevenZip.empty())
            can.sevenZip = sevenZip;
        return can;
    }

    friend bool operator==(ArchiveTools const &, ArchiveTools const &) = default;
};

} // namespace tw
