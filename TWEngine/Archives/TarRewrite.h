#pragma once

#include "TWEngine/Archives/ArchiveChild.h"
#include "TWEngine/Archives/TarFilter.h"

namespace tw {

/// Writes a tar archive anew, compressed as the old one is, without unpacking it.
namespace TarRewrite {

struct Files {
    std::string from; ///< the archive
    std::string to;   ///< an existing file, which is written over
};

/// Without the members, and with nothing of what is below them. Throws FileOperationError::Unsupported if none is left.
Task<void> without(ArchiveWork::Shared work, Files files, std::vector<std::string> members, ArchiveChild::Job job);

/// With what `tar` writes to its output as an uncompressed archive, in place of members of the same paths.
Task<void> with(ArchiveWork::Shared work, Files files, ChildCommand tar, ArchiveChild::Job job);

} // namespace TarRewrite

} // namespace tw
