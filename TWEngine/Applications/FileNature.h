#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tw {

/// What a file is, as far as opening it is concerned.
struct FileNature {
    enum class Kind {
        document, ///< everything that only another program does something with
        program,  ///< machine code, or code that a runtime executes as it is
        script,   ///< a text that its first line names the interpreter of, and that may be executed
        launcher  ///< a desktop entry, which holds a command
    };

    Kind kind = Kind::document;
    std::string contentType = {};   ///< "image/png"
    bool mayBeExecuted = false;     ///< the mode says so
    bool isMarkedAsFetched = false; ///< it was downloaded, by us or another program

    /// What is known of a file before any of it is judged.
    struct Facts {
        std::string_view name;
        std::string_view beginning; ///< some of its first bytes
        std::string contentType = {};
        std::uint16_t mode = 0; ///< permission bits
        bool isMarkedAsFetched = false;
    };

    static FileNature of(Facts const &facts);

    friend bool operator==(FileNature const &, FileNature const &) = default;
};

/// As much of a file as its nature is judged by.
inline constexpr std::size_t beginningOfFile = 4096;

} // namespace tw
