#include "TWCore/Archives/ArchiveFormat.h"

#include "TWCore/Model/LowerCased.h"

namespace tw {

std::string_view rawText(ArchiveFormat format) noexcept
{
    switch (format) {
    case ArchiveFormat::tarGz:
        return "tarGz";
    case ArchiveFormat::zip:
        return "zip";
    case ArchiveFormat::sevenZip:
        return "sevenZip";
    }
    return "";
}

std::string_view displayName(ArchiveFormat format) noexcept
{
    switch (format) {
    case ArchiveFormat::tarGz:
        return "tar.gz";
    case ArchiveFormat::zip:
        return "zip";
    case ArchiveFormat::sevenZip:
        return "7z";
    }
    return "";
}

std::optional<ArchiveFormat> detectArchiveFormat(std::string_view name)
{
    auto const lower = lowerCased(name);
    for (auto const *const ending : {".tar.gz", ".tgz", ".tar"}) {
        if (lower.ends_with(ending))
            return ArchiveFormat::tarGz;
    }
    if (lower.ends_with(".zip"))
        return ArchiveFormat::zip;
    if (lower.ends_with(".7z"))
        return ArchiveFormat::sevenZip;
    return std::nullopt;
}

} // namespace tw
