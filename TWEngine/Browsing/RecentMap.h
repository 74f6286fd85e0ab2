#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <unordered_map>
#include <utility>

namespace tw {

/// Values by text, of which only the ones set most recently are kept.
///
/// For what is worth remembering and not worth memory without end: a lost value costs a little work, never a wrong
/// answer.
///
/// Threads: none of its own; used by one owner at a time.
template <class Value>
class RecentMap {
public:
    /// `capacity` is the number of values that are kept, at least 1.
    explicit RecentMap(std::size_t capacity) : most(capacity) {}

    Value const *find(std::string const &key) const
    {
        auto const found = places.find(key);
        return found == places.end() ? nullptr : &found->second->second;
    }

    /// Sets a value, and forgets the one that was set longest ago if there are too many.
    void set(std::string const &key, Value value)
    {
        if (auto const found = places.find(key); found != places.end()) {
            found->second->second = std::move(value);
            bySetting.splice(bySetting.end(), bySetting, found->second);
            return;
        }
        places.emplace(key, bySetting.insert(bySetting.end(), {key, std::move(value)}));
        if (places.size() > most) {
            places.erase(bySetting.front().first);
            bySetting.pop_front();
        }
    }

    /// Forgets the values whose key `matches`. Looks at all of them.
    template <class Predicate>
    void eraseIf(Predicate matches)
    {
        for (auto each = bySetting.begin(); each != bySetting.end();) {
            if (!matches(each->first)) {
                ++each;
                continue;
            }
            places.erase(each->first);
            each = bySetting.erase(each);
        }
    }

    void clear()
    {
        places.clear();
        bySetting.clear();
    }

    std::size_t size() const noexcept { return places.size(); }

private:
    using Values = std::list<std::pair<std::string, Value>>;

    std::size_t most;
    Values bySetting; ///< the one set longest ago first
    std::unordered_map<std::string, typename Values::iterator> places;
};

} // namespace tw
