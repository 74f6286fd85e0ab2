#pragma once

#include <stdexcept>

namespace tw {

/// Thrown for a stream that is no tar archive, or one that must not be unpacked. `what` is the text for the user.
class TarError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace tw
