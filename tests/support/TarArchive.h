#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tw::test {

/// Writes tar archives block by block, also such as no program would write.
class TarArchive {
public:
    struct Member {
        std::string name;
        char kind = '0';
        std::string link = {};
        std::string data = {};
        std::string magic = std::string("ustar\0"
                                        "00",
                                        8);
        std::string prefix = {};
        std::string size = {}; ///< the field as it is; empty: that of the data
    };

    static std::string header(Member const &member);

    /// A header and its data.
    static std::string member(Member const &member);

    static std::string paxRecord(std::string_view key, std::string_view value);

    /// The two blocks at the end.
    static std::string end() { return std::string(1024, '\0'); }
};

} // namespace tw::test
