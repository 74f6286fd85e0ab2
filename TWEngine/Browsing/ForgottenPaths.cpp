#include "TWEngine/Browsing/ForgottenPaths.h"

namespace tw {

namespace {

bool holds(std::unordered_map<std::string, std::uint64_t> const &forgotten, std::string const &path,
           std::uint64_t fetch)
{
    auto const found = forgotten.find(path);
    return found != forgotten.end() && fetch <= found->second;
}

} // namespace

void ForgottenPaths::add(std::string const &path, Reach reach, std::uint64_t lastBegun)
{
    ++additions;
    if (size() >= capacity) {
        paths.clear();
        trees.clear();
        everythingBefore = lastBegun;
    }
    auto &where = reach == Reach::tree ? trees : paths;
    where.insert_or_assign(path, lastBegun);
}

bool ForgottenPaths::isStale(std::string const &path, std::uint64_t fetch) const
{
    if (fetch <= everythingBefore || holds(paths, path, fetch))
        return true;
    if (trees.empty())
        return false;
    for (auto above = path; above != "/"; above = parentOf(above)) {
        if (holds(trees, above, fetch))
            return true;
    }
    return holds(trees, "/", fetch);
}

void ForgottenPaths::clear()
{
    paths.clear();
    trees.clear();
    everythingBefore = 0;
}

std::string parentOf(std::string const &path)
{
    auto const slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

} // namespace tw
