#include "TWCore/Archives/ArchiveCapability.h"

#include <array>

namespace tw {

namespace {

/// The first fields that are not empty; "" where there are fewer. A host may send any number of them.
std::array<std::string_view, 3> leadingFields(std::string_view text)
{
    std::array<std::string_view, 3> fields;
    for (auto &field : fields) {
        auto const start = std::min(text.find_first_not_of(','), text.size());
        auto const length = std::min(text.find(',', start), text.size()) - start;
        field = text.substr(start, length);
        text.remove_prefix(start + length);
    }
    return fields;
}

} // namespace

ArchiveCapability ArchiveCapability::parse(std::string_view text)
{
    auto const [tar, zipTools, sevenZip] = leadingFields(text);
    ArchiveCapability capability{.usesBSDTar = tar == "bsdtar", .hasZipTools = zipTools == "yes"};
    if (!sevenZip.empty() && sevenZip != "no")
        capability.sevenZip = sevenZip;
    return capability;
}

std::vector<ArchiveFormat> ArchiveCapability::supportedFormats() const
{
    std::vector<ArchiveFormat> formats;
    if (canHandleZip())
        formats.push_back(ArchiveFormat::zip);
    if (canHandle7z())
        formats.push_back(ArchiveFormat::sevenZip);
    formats.push_back(ArchiveFormat::tarGz);
    return formats;
}

} // namespace tw
