#include "Tarnwick/Operations/PackTarget.h"

#include "TWCore/Model/LowerCased.h"

#include <algorithm>

namespace tw {

namespace {

constexpr std::string_view endings[] = {".tar.gz", ".zip", ".7z", ".tgz", ".tar"};

std::string withEnding(std::string_view path, ArchiveFormat format)
{
    return std::string(path).append(1, '.').append(displayName(format));
}

} // namespace

std::string PackTarget::suggested(std::string_view directory, std::string_view stem, ArchiveFormat format)
{
    std::string path(directory);
    if (!path.ends_with('/'))
        path += '/';
    return withEnding(path.append(stem), format);
}

std::string PackTarget::withFormat(std::string_view path, ArchiveFormat format)
{
    auto const name = lowerCased(path.substr(path.rfind('/') + 1));
    auto const *const ending =
        std::ranges::find_if(endings, [&](std::string_view each) { return name.ends_with(each); });
    if (ending != std::end(endings))
        path.remove_suffix(ending->size());
    return withEnding(path, format);
}

PackTarget PackTarget::of(std::string_view path, std::span<ArchiveFormat const> offered, ArchiveFormat chosen)
{
    auto const named = detectArchiveFormat(path);
    bool const isOffered = named && std::ranges::find(offered, *named) != offered.end();
    auto const format = isOffered ? *named : chosen;
    return {named == format ? std::string(path) : withEnding(path, format), format};
}

} // namespace tw
