#pragma once

#include <cerrno>

namespace tw {

/// Repeats a system call while signals interrupt it.
template <class Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace tw
