#include "Tarnwick/Settings/Defaults.h"

namespace tw {

void Defaults::setText(std::string const &key, std::string const &value)
{
    if (text(key) == value)
        return; // an unchanged setting is no reason to write a file or to call anybody
    store(key, value);
    // A copy: an observer may begin or end an observation.
    auto const all = observers;
    for (auto const &weak : all) {
        auto const observer = weak.lock();
        if (observer && observer->key == key)
            observer->changed();
    }
}

Defaults::Subscription Defaults::observe(std::string key, std::function<void()> changed)
{
    std::erase_if(observers, [](auto const &weak) { return weak.expired(); });
    auto observer = std::make_shared<Observer>(std::move(key), std::move(changed));
    observers.push_back(observer);
    return observer;
}

std::optional<std::string> MemoryDefaults::text(std::string const &key) const
{
    auto const found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

void MemoryDefaults::store(std::string const &key, std::string const &value)
{
    values[key] = value;
}

} // namespace tw
