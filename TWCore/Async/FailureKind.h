#pragma once

#include <exception>
#include <optional>

namespace tw {

/// A copy of `failure` if it is a `T` or derived from one. Nothing if it is something else, or null.
template <class T>
std::optional<T> failureAs(std::exception_ptr const &failure)
{
    try {
        if (failure)
            std::rethrow_exception(failure);
    } catch (T const &held) {
        return held;
    } catch (...) {
        return std::nullopt;
    }
    return std::nullopt;
}

/// Whether `failure` is a `T` or derived from one; false for null.
template <class T>
bool failureIs(std::exception_ptr const &failure)
{
    return failureAs<T>(failure).has_value();
}

} // namespace tw
