// The parsers of archive listings over any text, and the folders that are made of what they find.
//
// The first byte of an input says which tool printed the rest.

#include "TWCore/Archives/ArchiveListing.h"
#include "TWCore/Archives/ArchiveTree.h"
#include "TWCore/Check.h"

#include <algorithm>
#include <cstdint>

namespace tw {
namespace {

void checkTree(ArchiveTree const &tree, std::size_t members)
{
    check(tree.folders.contains("/"), "there is no root");
    check(tree.leftOut <= members, "more members are left out than there are");
    for (auto const &[path, listing] : tree.folders) {
        check(path == "/" || tree.folders.contains(path.substr(0, std::max<std::size_t>(path.rfind('/'), 1))),
              "a folder lies in none");
        std::string_view last;
        for (auto const &entry : listing.entries()) {
            auto const name = listing.nameBytes(entry);
            check(!name.empty() && name != "." && name != ".." && !name.contains('/'), "a name leads elsewhere");
            check(last < name, "the rows are not in order");
            check(!entry.isDirectory() || tree.folders.contains(listing.childPath(entry)), "a folder cannot be opened");
            last = name;
        }
    }
}

void checkListing(bool is7z, std::string_view text)
{
    auto const entries = is7z ? ArchiveListing::parse7z(text) : ArchiveListing::parseTar(text);
    for (auto const &entry : entries) {
        check(!entry.path.empty(), "a member has no path");
        check(!entry.path.starts_with('/') && !entry.path.ends_with('/'), "a path is not normalised");
        check(!entry.isDirectory || entry.size == 0, "a folder has a size");
    }
    checkTree(ArchiveTree::build(entries, {}), entries.size());
}

} // namespace
} // namespace tw

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size > 0)
        tw::checkListing((data[0] & 1) != 0, {reinterpret_cast<char const *>(data) + 1, size - 1});
    return 0;
}
