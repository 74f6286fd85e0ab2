#pragma once

#include "TWEngine/Browsing/Browser.h"

#include <memory>
#include <string>

namespace tw {

class OpenArchive;

enum class MarksAfter { dropped, kept };

/// What happens to the strip's failure when a pane arrives.
enum class NoticeAfter { dropped, kept };

/// One wish of a pane to be somewhere else.
struct Navigation {
    std::string path;
    std::string select = {}; ///< the name for the cursor; empty: the name that it was left on
    MarksAfter marks = MarksAfter::dropped;
    /// Kept where the pane goes because it could not get to another place.
    NoticeAfter notice = NoticeAfter::dropped;

    bool isOfLink = false; ///< the row of a link is opened, which may lead to a file
    bool isReread = false; ///< what is cached of the path is forgotten first

    /// Where the path is. The pane goes over to it when the folder arrives, so that what is on show and what a key acts
    /// on never belong to two places. Null: the connection that the pane has.
    std::shared_ptr<Browser> source = {};
    std::string connection = {};
    std::shared_ptr<OpenArchive const> archive = {}; ///< whose inside the source is; null: of none
};

} // namespace tw
