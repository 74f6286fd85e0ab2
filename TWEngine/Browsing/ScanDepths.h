#pragma once

#include "TWEngine/Browsing/RecentMap.h"

#include <algorithm>

namespace tw {

/// How deep the scans of each folder go, learned from the scans before: one that was slow or whose answer was cut short
/// is made less deep the next time.
///
/// Threads: none of its own; used by one owner at a time.
class ScanDepths {
public:
    /// Folders that something is remembered of. A forgotten one is learned again by one more slow scan.
    static constexpr std::size_t capacity = 1024;

    /// The depth for a scan of `root` that would usually go `usual` levels deep.
    int depthFor(std::string const &root, int usual) const
    {
        auto const *const learned = lowered.find(root);
        return learned ? std::max(*learned, 1) : usual;
    }

    /// Whether even one level of `root` was too much for a scan in the background.
    bool isWide(std::string const &root) const
    {
        auto const *const learned = lowered.find(root);
        return learned && *learned == 0;
    }

    /// A scan of that depth was too much: it was slow, or brought part of its root only. One level can be too much for
    /// its size, but is never too deep.
    void lower(std::string const &root, int depth) { lowered.set(root, depth - 1); }

    void clear() { lowered.clear(); }

private:
    RecentMap<int> lowered{capacity}; ///< by root; 0 is a wide folder
};

} // namespace tw
