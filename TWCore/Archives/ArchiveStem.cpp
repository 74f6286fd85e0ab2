#include "TWCore/Archives/ArchiveStem.h"

#include "TWCore/Model/LowerCased.h"

namespace tw {

std::string archiveStem(std::string_view name)
{
    auto const lower = lowerCased(name);
    for (std::string_view const ending : {".tar.gz", ".tar.bz2", ".tar.xz", ".tgz", ".tar", ".zip", ".7z"}) {
        // A name that is nothing but the ending would leave none.
        if (name.size() > ending.size() && lower.size() == name.size() && lower.ends_with(ending))
            return std::string(name.substr(0, name.size() - ending.size()));
    }
    return std::string(name);
}

} // namespace tw
