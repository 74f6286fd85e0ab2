#include "TWCore/Archives/ReadableArchive.h"

#include "TWCore/Archives/ArchiveFormat.h"
#include "TWCore/Model/LowerCased.h"

#include <array>

namespace tw {

namespace {

struct Ending {
    std::string_view text;
    ArchiveFamily family;
};

/// Of what is opened and never packed.
constexpr std::array endings{
    Ending{".tar.bz2", ArchiveFamily::tar}, Ending{".tbz2", ArchiveFamily::tar}, Ending{".tbz", ArchiveFamily::tar},
    Ending{".tar.xz", ArchiveFamily::tar},  Ending{".txz", ArchiveFamily::tar},  Ending{".tar.zst", ArchiveFamily::tar},
    Ending{".tzst", ArchiveFamily::tar},    Ending{".jar", ArchiveFamily::zip},  Ending{".rar", ArchiveFamily::other},
    Ending{".iso", ArchiveFamily::other},   Ending{".deb", ArchiveFamily::other}};

ArchiveFamily familyOf(ArchiveFormat format)
{
    switch (format) {
    case ArchiveFormat::tarGz:
        return ArchiveFamily::tar;
    case ArchiveFormat::zip:
        return ArchiveFamily::zip;
    case ArchiveFormat::sevenZip:
        break;
    }
    return ArchiveFamily::sevenZip;
}

} // namespace

std::optional<ArchiveFamily> readableArchive(std::string_view name)
{
    if (auto const format = detectArchiveFormat(name))
        return familyOf(*format);
    auto const lower = lowerCased(name);
    for (auto const &[ending, family] : endings) {
        if (lower.ends_with(ending))
            return family;
    }
    return std::nullopt;
}

} // namespace tw
