#pragma once

#include <source_location>

namespace tw {

/// Ends the process with `message` on standard error: an invariant of our own code is broken, and going on could change
/// the wrong files. What a host, a file or the user can cause is a typed exception instead.
[[noreturn]] void bug(char const *message, std::source_location where = std::source_location::current());

/// Ends the process as `bug` does unless `condition` holds. In release builds too.
inline void check(bool condition, char const *message, std::source_location where = std::source_location::current())
{
    if (!condition) [[unlikely]]
        bug(message, where);
}

} // namespace tw
