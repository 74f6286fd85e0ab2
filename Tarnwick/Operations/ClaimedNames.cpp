#include "Tarnwick/Operations/ClaimedNames.h"

#include "Tarnwick/Operations/TakenNames.h"

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

std::optional<std::string> ClaimedNames::clash(Names const &wanted, Claim const &own)
{
    for (auto const &each : current()) {
        if (each == own)
            continue;
        if (auto path = clashOf(wanted, *each))
            return path;
    }
    return std::nullopt;
}

ClaimedNames::Claim ClaimedNames::hold(Names names)
{
    auto claim = std::make_shared<Names const>(std::move(names));
    claims.push_back(claim);
    return claim;
}

std::vector<std::string> ClaimedNames::besides(Claim const &own)
{
    std::vector<std::string> all;
    for (auto const &each : current()) {
        if (each != own && each->place == own->place && each->folder == own->folder)
            all.insert(all.end(), each->names.begin(), each->names.end());
    }
    return all;
}

std::size_t ClaimedNames::endings()
{
    ended += std::erase_if(claims, [](auto const &each) { return each.expired(); });
    return ended;
}

std::vector<ClaimedNames::Claim> ClaimedNames::current()
{
    endings();
    std::vector<Claim> all;
    for (auto const &each : claims)
        all.push_back(each.lock());
    return all;
}

} // namespace tw
