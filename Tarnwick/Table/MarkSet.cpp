#include "Tarnwick/Table/MarkSet.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>

namespace tw {

bool MarkSet::set(std::uint32_t index, bool marked)
{
    if (contains(index) == marked)
        return false;
    flags[index] = marked;
    count = marked ? count + 1 : count - 1;
    return true;
}

void MarkSet::clear()
{
    flags.assign(flags.size(), false);
    count = 0;
    absent.clear();
}

void MarkSet::carryOver(DirectorySnapshot const &before, DirectorySnapshot const &after)
{
    std::unordered_set<std::string> names(absent.begin(), absent.end());
    for (std::uint32_t index = 0; index < flags.size(); ++index) {
        if (flags[index])
            names.emplace(before.nameBytes(before.entries()[index]));
    }
    flags.assign(after.count(), false);
    count = 0;
    absent.clear();
    if (names.empty())
        return;
    std::unordered_set<std::string> found;
    std::string name; // one for all, so that a large folder costs no allocation an entry
    for (std::uint32_t index = 0; index < flags.size(); ++index) {
        name = after.nameBytes(after.entries()[index]);
        if (!names.contains(name))
            continue;
        set(index, true);
        found.insert(name);
    }
    std::ranges::copy_if(names, std::inserter(absent, absent.end()),
                         [&](std::string const &each) { return !found.contains(each); });
}

} // namespace tw
