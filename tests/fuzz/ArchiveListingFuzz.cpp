// The parsers of archive listings over any text, and the folders that are made of what they find.
//
// The first byte of an input, a digit from 0 to 4, says which tool printed the rest: a tar or 7-Zip of a host, or GNU
// tar, bsdtar or 7-Zip of this machine with dates.

#include "TWCore/Archives/ArchiveListing.h"
#include "TWCore/Archives/ArchiveTree.h"
#include "TWCore/Archives/DatedListing.h"
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

ArchiveMembers membersIn(unsigned tool, std::string_view text)
{
    std::chrono::sys_days const today = std::chrono::year(2026) / 11 / 22;
    switch (tool) {
    case 0:
        return {.entries = ArchiveListing::parseTar(text), .hardLinks = ArchiveListing::hardLinksIn(text)};
    case 1:
        return {.entries = ArchiveListing::parse7z(text)};
    case 2:
        return DatedListing::parseGnuTar(text);
    case 3:
        return DatedListing::parseBsdTar(text, today);
    default:
        return DatedListing::parseSevenZip(text);
    }
}

void checkPath(std::string const &path)
{
    check(!path.empty(), "a member has no path");
    check(!path.starts_with('/') && !path.ends_with('/'), "a path is not normalised");
}

void checkListing(unsigned tool, std::string_view text)
{
    auto const members = membersIn(tool, text);
    for (auto const &entry : members.entries) {
        checkPath(entry.path);
        check(!entry.isDirectory || entry.size == 0, "a folder has a size");
    }
    for (auto const &[path, target] : members.hardLinks) {
        checkPath(path);
        checkPath(target);
    }
    check(members.hardLinks.size() <= members.entries.size(), "a hard link is no member");
    checkTree(ArchiveTree::build(members.entries, {}), members.entries.size());
}

} // namespace
} // namespace tw

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size > 0)
        tw::checkListing((data[0] - unsigned{'0'}) % 5, {reinterpret_cast<char const *>(data) + 1, size - 1});
    return 0;
}
