#pragma once

#include "TWCore/Archives/ArchiveFormat.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// What the archive tools of one machine can do.
struct ArchiveCapability {
    bool usesBSDTar = false;                  ///< its `tar` is bsdtar, which reads and writes zip by itself
    bool hasZipTools = false;                 ///< it has both `zip` and `unzip`
    std::optional<std::string> sevenZip = {}; ///< the program to call for 7-Zip

    /// The capability in a host's greeting: three fields with commas between them. A missing field means that the tool
    /// is missing.
    static ArchiveCapability parse(std::string_view text);

    /// The zip tools do not count: `zip` spoils names that are not ASCII. They are for unpacking only.
    bool canHandleZip() const noexcept { return usesBSDTar || sevenZip; }

    bool canHandle7z() const noexcept { return sevenZip.has_value(); }

    /// The formats that can be packed, in the order in which they are offered.
    std::vector<ArchiveFormat> supportedFormats() const;

    friend bool operator==(ArchiveCapability const &, ArchiveCapability const &) = default;
};

} // namespace tw
