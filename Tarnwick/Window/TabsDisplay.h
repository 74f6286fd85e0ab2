#pragma once

#include "Tarnwick/Window/TabItem.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace tw {

class PaneController;

/// What a PaneContainer needs of a toolkit.
///
/// Threads: main context only.
class TabsDisplay {
public:
    virtual ~TabsDisplay() = default;

    /// All tabs, of which one is selected.
    virtual void showTabs(std::vector<TabItem> const &tabs, std::size_t selected) = 0;

    /// The one pane on show from now on.
    virtual void showPane(std::shared_ptr<PaneController> const &pane) = 0;
};

} // namespace tw
