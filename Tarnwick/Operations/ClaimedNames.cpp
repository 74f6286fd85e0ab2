#include "Tarnwick/Operations/ClaimedNames.h"

#include "Tarnwick/Operations/TakenNames.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace tw {

namespace {

std::string pathIn(std::string const &folder, std::string const &name)
{
    return folder == "/" ? folder + name : folder + "/" + name;
}

/// The name in `folder` that `path` is or leads through; empty if `path` is not below `folder`.
std::string_view firstBelow(std::string_view path, std::string_view folder)
{
    if (folder != "/" && path.starts_with(folder))
        path.remove_prefix(folder.size());
    else if (folder != "/")
        return {};
    if (!path.starts_with('/'))
        return {};
    path.remove_prefix(1);
    return path.substr(0, path.find('/'));
}

/// The path of a name of `names` that has `key`.
std::optional<std::string> withKey(ClaimedNames::Names const &names, std::string_view key, bool takesCasesForOne)
{
    for (auto const &name : names.names) {
        if (!key.empty() && TakenNames::keyOf(name, takesCasesForOne) == key)
            return pathIn(names.folder, name);
    }
    return std::nullopt;
}

std::optional<std::string> clashOf(ClaimedNames::Names const &one, ClaimedNames::Names const &other)
{
    if (one.place != other.place)
        return std::nullopt;
    auto const folds = one.takesCasesForOne || other.takesCasesForOne;
    auto const folder = TakenNames::keyOf(one.folder, folds);
    auto const otherFolder = TakenNames::keyOf(other.folder, folds);
    if (folder != otherFolder) {
        auto path = withKey(other, firstBelow(folder, otherFolder), folds);
        return path ? path : withKey(one, firstBelow(otherFolder, folder), folds);
    }
    std::unordered_set<std::string> keys;
    for (auto const &name : other.names)
        keys.insert(TakenNames::keyOf(name, folds));
    for (auto const &name : one.names) {
        if (keys.contains(TakenNames::keyOf(name, folds)))
            return pathIn(one.folder, name);
    }
    return std::nullopt;
}

} // namespace

std::optional<ClaimedNames::Clash> ClaimedNames::clash(std::vector<Names> const &wanted, Claim const &own)
{
    for (auto const &claim : othersThan(own)) {
        for (auto const &each : *claim) {
            for (auto const &names : wanted) {
                if (auto path = clashOf(names, each))
                    return Clash{.path = *std::move(path), .use = each.use};
            }
        }
    }
    return std::nullopt;
}

ClaimedNames::Claim ClaimedNames::hold(std::vector<Names> names)
{
    auto claim = std::make_shared<std::vector<Names> const>(std::move(names));
    claims.push_back(claim);
    return claim;
}

std::vector<std::string> ClaimedNames::besides(Names const &where, Claim const &own)
{
    std::vector<std::string> all;
    for (auto const &claim : othersThan(own)) {
        for (auto const &each : *claim) {
            if (each.place == where.place && each.folder == where.folder)
                all.insert(all.end(), each.names.begin(), each.names.end());
        }
    }
    return all;
}

bool ClaimedNames::isAnyAt(std::string const &place)
{
    return std::ranges::any_of(othersThan(nullptr), [&](auto const &claim) {
        return std::ranges::find(*claim, place, &Names::place) != claim->end();
    });
}

std::size_t ClaimedNames::endings()
{
    ended += std::erase_if(claims, [](auto const &each) { return each.expired(); });
    return ended;
}

std::vector<ClaimedNames::Claim> ClaimedNames::othersThan(Claim const &own) const
{
    std::vector<Claim> all;
    for (auto const &each : claims) {
        auto claim = each.lock();
        if (claim && claim != own)
            all.push_back(std::move(claim));
    }
    return all;
}

} // namespace tw
