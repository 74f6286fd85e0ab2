#pragma once

#include <source_location>

namespace tw {

/// Ends the process with `message` on standard error: an invariant of our own code is broken, and to go on would work
/// on the wrong files. Never for what a host, a file or the user can cause; that is a typed exception.
[[noreturn]] void bug(char const *message, std::source_location where = std::source_location::current());

/// Nothing if `condition` holds, else a bug. In release builds too.
inline void check(bool condition, char const *message, std::source_location where = std::source_location::current())
{
    if (!condition) [[unlikely]]
        bug(message, where);
}

} // namespace tw
