#include "TWEngine/SSH/HostListing.h"

#include "TWCore/Model/FileOperationError.h"

#include <algorithm>

namespace tw::HostListing {

namespace {

/// A lister that may read a folder but examine nothing in it prints no size and no time, or leaves the entry out.
bool wasExamined(Entry const &entry)
{
    return entry.size != 0 || entry.mtime != 0 || entry.mode != 0;
}

/// True if a folder without permission could look like this too.
bool isDoubtful(DirectorySnapshot const &snapshot)
{
    return !std::ranges::all_of(snapshot.entries(), wasExamined) || snapshot.count() == 0;
}

} // namespace

Listings read(ListingResponse response, Question const &asked, std::chrono::system_clock::time_point fetchedAt)
{
    ListingScan scan(asked.path, asked.depth);
    return read(std::move(response), asked, fetchedAt, scan);
}

Listings read(ListingResponse response, Question const &asked, std::chrono::system_clock::time_point fetchedAt,
              ListingScan &scan)
{
    auto const completeness =
        response.truncated ? ListingParser::Completeness::truncated : ListingParser::Completeness::whole;
    auto listings =
        scan.finish(std::make_shared<std::string const>(std::move(response.bytes)), fetchedAt, completeness);
    auto const path = ListingParser::normalize(asked.path);
    auto const root = listings.find(path);
    if (response.refusal && (root == listings.end() || isDoubtful(root->second)))
        throw FileOperationError::Failed("list", asked.path, *response.refusal);
    // A host may report a failure after having sent a part of the tree.
    auto const hasEntries = root != listings.end() && root->second.count() > 0;
    if (response.status != 0 && !hasEntries)
        throw FileOperationError::Failed("list", asked.path, asked.host + " could not read that folder");
    if (asked.dialect == ShellDialect::posix)
        std::erase_if(listings, [&](auto const &each) { return each.first != path && isDoubtful(each.second); });
    return listings;
}

} // namespace tw::HostListing
