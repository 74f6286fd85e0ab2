#pragma once

#include <exception>

namespace tw {

/// Thrown at a suspension of a task whose stop token was asked to stop.
///
/// A cancelled task unwinds with it. It is not a failure, and is never shown to the user.
class Cancelled final : public std::exception {
public:
    char const *what() const noexcept override { return "cancelled"; }
};

} // namespace tw
