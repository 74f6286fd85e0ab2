#pragma once

namespace tw {

/// Who waits for a listing.
enum class FetchPriority {
    interactive, ///< a person
    background,  ///< nobody; a revalidation or a prefetch
};

} // namespace tw
