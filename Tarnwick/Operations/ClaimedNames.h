#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// The names that the transfers under way in this program are to write.
///
/// A place knows a name only once it is written. Without this, a second transfer into a folder would find those names
/// free that the first one has not reached yet, and both would write them.
///
/// Threads: main context only.
/// Lifetime: shared by all operations of the program. Claims may outlive it.
class ClaimedNames {
public:
    struct Names {
        std::string place;  ///< FileSystemProvider::identifier
        std::string folder; ///< path without links
        std::vector<std::string> names;
        bool takesCasesForOne = false; ///< the folder
    };

    /// The names are claimed as long as this exists.
    using Claim = std::shared_ptr<Names const>;

    /// The path of a name that is claimed and that `wanted` would write as well, or write into; nothing if there is
    /// none. `own` does not count; null: every claim counts.
    std::optional<std::string> clash(Names const &wanted, Claim const &own = nullptr);

    /// Precondition: no clash.
    Claim hold(Names names);

    /// The names that others than `own` have claimed in its folder.
    std::vector<std::string> besides(Claim const &own);

    /// How many claims have ended. If the number is the same before and after a question to a place, every name that
    /// was written meanwhile is in the answer or is still claimed.
    std::size_t endings();

private:
    /// Those that exist.
    std::vector<Claim> current();

    std::vector<std::weak_ptr<Names const>> claims;
    std::size_t ended = 0;
};

} // namespace tw
