#pragma once

#include "TWCore/Provider/Survey.h"
#include "tests/support/DiskRows.h"
#include "tests/support/TemporaryFolder.h"

#include <map>

namespace tw::test {

/// Files, folders and links of all kinds, with names of all bytes.
inline void fillTree(TemporaryFolder const &folder)
{
    folder.folder("tree/a/b");
    folder.folder("tree/empty");
    folder.folder("tree/links");
    for (auto const &name : hostileNames()) {
        folder.file("tree/" + name, name);
        folder.file("tree/a/b/" + name, "x");
        folder.file(name, name);
        folder.link("tree/links/" + name, name);
    }
    folder.link("dangling", "no where");
    folder.file("-", "12345");
}

/// The digests that are the same for a faithful copy.
inline std::map<std::string, std::tuple<std::int64_t, std::int64_t, std::int64_t, std::uint64_t>>
shapes(Survey const &survey)
{
    std::map<std::string, std::tuple<std::int64_t, std::int64_t, std::int64_t, std::uint64_t>> result;
    for (auto const &[name, part] : survey.parts)
        result[name] = {part.files, part.folders, part.bytes, part.shape};
    return result;
}

} // namespace tw::test
