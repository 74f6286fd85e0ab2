#include "TWEngine/Browsing/KeptListings.h"

namespace tw {

KeptListings::KeptListings(std::shared_ptr<PersistentListings> place, std::optional<std::string> providerIdentity,
                           std::shared_ptr<Executor> ground, std::shared_ptr<Clock> time)
    : store(providerIdentity ? std::move(place) : nullptr),
      identity(std::move(providerIdentity).value_or(std::string())),
      executor(std::move(ground)),
      clock(std::move(time))
{
}

Task<std::optional<DirectorySnapshot>> KeptListings::load(std::string path) const
{
    return store->load(identity, std::move(path));
}

void KeptListings::save(std::string const &root, int depth, Listings listings, bool changed,
                        std::chrono::duration<double> interval)
{
    if (!store || listings.empty())
        return;
    auto const key = root + '\0' + std::to_string(depth);
    auto const now = clock->now();
    auto const *const last = lastSaved.find(key);
    if (!changed && last && secondsBetween(*last, now) < interval.count())
        return;
    lastSaved.set(key, now);
    spawn({executor, {}}, store->save(identity, std::move(listings)));
}

void KeptListings::forget(std::string const &path)
{
    if (!store)
        return;
    auto const scans = path + '\0';
    lastSaved.eraseIf([&](std::string const &key) { return key.starts_with(scans); });
    spawn({executor, {}}, store->remove(identity, path));
}

void KeptListings::forgetTree(std::string const &path)
{
    if (!store)
        return;
    auto const scans = path + '\0';
    auto const below = path == "/" ? path : path + '/';
    lastSaved.eraseIf([&](std::string const &key) { return key.starts_with(scans) || key.starts_with(below); });
    spawn({executor, {}}, store->removeTree(identity, path));
}

} // namespace tw
