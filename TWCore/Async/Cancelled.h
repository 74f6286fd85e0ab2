#pragma once

#include <exception>

namespace tw {

/// Thrown out of a suspension by a task whose stop token was asked to stop.
///
/// It is how a cancelled task unwinds, not a failure: nobody shows it to the user.
class Cancelled final : public std::exception {
public:
    char const *what() const noexcept override { return "cancelled"; }
};

} // namespace tw
