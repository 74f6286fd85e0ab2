#pragma once

#include "TWCore/Shell/ShellDialect.h"
#include "TWEngine/Transfer/TarReader.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace tw {

/// Says which members a host may send: those that were asked for, and what is below them.
class MemberGuard {
public:
    /// `target` is what unpacks the archive: Windows takes more for a path than others do.
    MemberGuard(std::vector<std::string> const &names, ShellDialect target);

    /// Throws TarError for a member that would be written outside of the names, and for a hard link to a file outside.
    /// A symbolic link may lead anywhere; what unpacks it does not follow it.
    void check(TarMember const &member) const;

private:
    bool isInside(std::string_view path) const;

    // Constant after construction.
    std::unordered_set<std::string> const asked;
    ShellDialect const target;
};

} // namespace tw
