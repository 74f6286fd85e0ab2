#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// What the attributes of a pax archive change about the member that they belong to.
struct PaxRecords {
    std::optional<std::string> name = {};
    std::optional<std::string> sparseName = {}; ///< of a sparse file, whose `name` is made up
    std::optional<std::string> linkTarget = {};
    std::optional<std::int64_t> size = {};

    /// Reads the data of an attributes member. Throws TarError.
    static PaxRecords parse(std::string_view data);
};

} // namespace tw
