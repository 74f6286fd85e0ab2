#pragma once

#include "TWCore/Model/Text.h"
#include "TWEngine/Browsing/Browser.h"

#include <memory>
#include <string>

namespace tw {

enum class MarksAfter { dropped, kept };

/// One wish of a pane to be somewhere else.
struct Navigation {
    std::string path;
    std::string select = {}; ///< the name for the cursor; empty: the name that it was left on
    MarksAfter marks = MarksAfter::dropped;
    Text notice = {}; ///< for the status line after the arrival, or empty

    bool isOfLink = false; ///< the row of a link is opened, which may lead to a file
    bool isReread = false; ///< what is cached of the path is forgotten first

    /// Where the path is. The pane goes over to it when the folder arrives, so that what is on show and what a key acts
    /// on never belong to two places. Null: the connection that the pane has.
    std::shared_ptr<Browser> source = {};
    std::string connection = {};
};

} // namespace tw
