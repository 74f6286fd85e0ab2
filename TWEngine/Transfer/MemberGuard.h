#pragma once

#include "TWCore/Shell/ShellDialect.h"
#include "TWEngine/Transfer/OpenFolders.h"
#include "TWEngine/Transfer/TarReader.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace tw {

/// Says which members a host may send in one stream: those that were asked for, and what is below them.
///
/// A member also needs a folder that came before it in the stream, and nothing else in its place since. Otherwise a
/// link that lies at the target could lead what unpacks the archive out of the names. Tar replaces such a link by a
/// folder that comes.
class MemberGuard {
public:
    /// `target` is what unpacks the archive: Windows takes more for a path than others do.
    MemberGuard(std::vector<std::string> const &names, ShellDialect target);

    /// To be called for each member, in their order. Throws TarError for a member that would be written outside of the
    /// names, and for a hard link to a file outside; the stream is refused then. A symbolic link may lead anywhere:
    /// nothing can come below it.
    void check(TarMember const &member);

private:
    bool isInside(std::string_view path) const;
    bool isInOpenFolder(TarMember const &member);

    // Constant after construction.
    std::unordered_set<std::string> const asked;
    ShellDialect const target;

    OpenFolders folders;
};

} // namespace tw
