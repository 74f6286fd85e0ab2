#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tw {

/// The names that the operations under way in this program write, move away or delete.
///
/// A place knows a name only once it is written. Without this, a second transfer into a folder would find those names
/// free that the first one has not reached yet, and both would write them. What is read is not claimed: a copy whose
/// source goes fails, and nothing else is harmed.
///
/// Threads: main context only.
/// Lifetime: shared by all operations of the program. Claims may outlive it.
class ClaimedNames {
public:
    enum class Use { written, moved, deleted };

    struct Names {
        std::string place;  ///< FileSystemProvider::identifier
        std::string folder; ///< path; without links, if the place was asked
        std::vector<std::string> names;
        bool takesCasesForOne = false; ///< the folder
        Use use = Use::written;
    };

    /// The names are claimed as long as this exists.
    using Claim = std::shared_ptr<std::vector<Names> const>;

    struct Clash {
        std::string path;
        Use use; ///< that the other operation makes of it

        friend bool operator==(Clash const &, Clash const &) = default;
    };

    /// The first of `wanted` that is claimed, is below what is claimed or has something below it that is. `own` does
    /// not count; null: every claim counts.
    std::optional<Clash> clash(std::vector<Names> const &wanted, Claim const &own = nullptr);

    /// Precondition: no clash.
    Claim hold(std::vector<Names> names);

    /// The names in the folder of `where` that others than `own` have claimed.
    std::vector<std::string> besides(Names const &where, Claim const &own);

    /// Whether anything of that place is claimed.
    bool isAnyAt(std::string const &place);

    /// How many claims have ended. If the number is the same before and after a question to a place, every name that
    /// was written meanwhile is in the answer or is still claimed.
    std::size_t endings();

private:
    /// Those that exist.
    std::vector<Claim> othersThan(Claim const &own) const;

    std::vector<Claim::weak_type> claims;
    std::size_t ended = 0;
};

} // namespace tw
