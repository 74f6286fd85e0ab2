#pragma once

#include "TWEngine/Transfer/TarReader.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

/// Passes a tar archive on in pieces, without some of its members. What it passes keeps every byte, and with that
/// owner, mode, times and attributes.
///
/// Memory: the piece, one description, and the paths that are left out or were seen.
/// Errors: TarError, also for a hard link that stays although the file it needs goes.
class TarFilter {
public:
    /// Which members are left out: each of `paths`, as an archive's listing shows them.
    enum class Covers {
        everythingBelow, ///< and what is below them
        themAlone
    };

    TarFilter(std::vector<std::string> const &paths, Covers covers);

    /// What stays of the next bytes of the archive; nothing of the zeros at its end.
    std::string pass(std::string_view bytes);

    /// True behind the end of the archive.
    bool isAtEnd() const noexcept { return reader.isAtEnd(); }

    /// Members that have stayed so far.
    std::int64_t kept() const noexcept { return keptMembers; }

    /// The paths of what has stayed, folders too.
    std::set<std::string> const &keptPaths() const noexcept { return seen; }

    /// The two blocks of zeros that end an archive.
    static std::string end() { return std::string(2 * TarHeader::blockBytes, '\0'); }

private:
    void passBlock(std::string &passed);
    void begin(TarMember const &member);
    bool isLeftOut(std::string_view path) const;

    // Constant after construction.
    std::set<std::string> const without;
    Covers const covers;

    TarReader reader;
    std::string block;     ///< the beginning of a block
    std::string undecided; ///< descriptions of the next member
    bool isForAll = false; ///< the description under way is of all members behind it
    bool hasBegun = false; ///< a member, with the last block
    bool isOut = false;    ///< the member under way is left out
    std::int64_t keptMembers = 0;
    std::set<std::string> seen;
};

} // namespace tw
