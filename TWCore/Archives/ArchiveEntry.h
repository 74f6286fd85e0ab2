#pragma once

#include <cstdint>
#include <string>

namespace tw {

/// One member of an archive, as its tool lists it.
struct ArchiveEntry {
    std::string
        path; ///< inside the archive, without slashes at its ends; the exact bytes as far as the tool tells them
    bool isDirectory = false;
    std::int64_t size = 0; ///< bytes; 0 for a folder
    double mtime = 0;      ///< seconds since 1970-01-01 UTC; 0 where the listing has no date that we read

    friend bool operator==(ArchiveEntry const &, ArchiveEntry const &) = default;
};

} // namespace tw
