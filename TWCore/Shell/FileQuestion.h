#pragma once

#include "TWCore/Model/Entry.h"
#include "TWCore/Shell/ShellDialect.h"

#include <cstdint>
#include <string>
#include <string_view>

/// The command that asks a host what a path leads to, before it is read, and what its answer says.
///
/// The reading service prints nothing for a file that it cannot read, and waits without end for a pipe.
namespace tw::FileQuestion {

struct Answer {
    enum class Access { readable, refused, missing };

    Access access = Access::missing;
    EntryKind kind = EntryKind::unknown; ///< of what the links lead to
    std::int64_t size = 0;               ///< bytes
    std::string identity = {};           ///< another one for another file of that name; empty if the host has none
};

std::string text(ShellDialect dialect, std::string_view path);

Answer answer(std::string_view output);

} // namespace tw::FileQuestion
