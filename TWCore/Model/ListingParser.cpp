#include "TWCore/Model/ListingParser.h"

#include "TWCore/Model/ListingScan.h"

namespace tw::ListingParser {

std::map<std::string, DirectorySnapshot> parse(NameStorage response, std::string_view root, int maxDepth,
                                               std::chrono::system_clock::time_point fetchedAt,
                                               Completeness completeness)
{
    return ListingScan(root, maxDepth).finish(std::move(response), fetchedAt, completeness);
}

std::string normalize(std::string_view path)
{
    while (path.size() >= 2 && path.ends_with('/'))
        path.remove_suffix(1);
    return std::string(path);
}

} // namespace tw::ListingParser
