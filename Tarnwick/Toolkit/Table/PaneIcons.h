#pragma once

#include <QIcon>

#include <string>
#include <unordered_map>

namespace tw {

/// The icons of entries: from the desktop's theme where it has pictures for files, else our own.
///
/// Each is looked for once; afterwards it is found by its key.
class PaneIcons {
public:
    PaneIcons();

    /// The icon of a key of `paneIconKey`. Never null.
    QIcon const &icon(std::string const &key);

    /// After a change of the desktop's theme.
    void clear();

    std::size_t cachedCount() const noexcept { return cache.size(); }

private:
    std::unordered_map<std::string, QIcon> cache;
    bool usesTheme;
};

} // namespace tw
