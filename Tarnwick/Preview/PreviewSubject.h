#pragma once

#include "TWCore/Model/Entry.h"
#include "TWEngine/Browsing/Browser.h"

#include <memory>
#include <optional>
#include <string>

namespace tw {

class PaneController;

/// The file under the cursor, as its listing has it.
struct PreviewSubject {
    std::shared_ptr<Browser> browser = {};
    std::string connection = {}; ///< "local", or a host
    std::string path = {};       ///< whole, with the name
    std::string name = {};
    EntryKind kind = EntryKind::unknown;
    std::int64_t size = 0;  ///< bytes
    std::int64_t mtime = 0; ///< seconds since 1970-01-01 UTC
    bool isRemote = false;

    /// Nothing in an empty table, and on the row of the folder above.
    static std::optional<PreviewSubject> underCursor(PaneController const &pane);

    /// A file that has changed is another one.
    friend bool operator==(PreviewSubject const &a, PreviewSubject const &b)
    {
        return a.path == b.path && a.connection == b.connection && a.kind == b.kind && a.size == b.size &&
               a.mtime == b.mtime;
    }
};

} // namespace tw
