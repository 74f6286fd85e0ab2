#pragma once

#include <span>
#include <string>

namespace tw::test {

/// Writes zip archives byte by byte, with names as no program of this machine would write them.
class ZipArchive {
public:
    struct Member {
        std::string name;
        std::string data = {}; ///< is stored as it is
        bool isMarkedAsUTF8 = false;
    };

    static std::string of(std::span<Member const> members);
};

} // namespace tw::test
