#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tw {

/// One header block of a tar archive: ustar, GNU, or the older form without a magic number.
struct TarHeader {
    static constexpr std::size_t blockBytes = 512;

    enum class Kind {
        file,
        hardLink,
        symbolicLink,
        folder,
        node, ///< a FIFO or a device
        sparseFile,
        longName,        ///< its data is the name of the next member
        longLink,        ///< its data is the link target of the next member
        attributes,      ///< its data is pax records for the next member
        commonAttributes ///< its data is pax records for all members behind it
    };

    Kind kind = Kind::file;
    std::string name = {};
    std::string linkTarget = {};
    std::int64_t size = 0;      ///< bytes of the data behind the header, without padding
    bool hasMoreSparse = false; ///< of a sparse file: a block that continues its map stands before the data

    /// True for a member that carries no file, but something about the next one.
    bool describesOthers() const noexcept { return kind >= Kind::longName; }

    /// Reads a block of `blockBytes` that is not all zeros. Throws TarError for everything that two programs could read
    /// in two ways.
    static TarHeader parse(std::string_view block);

    static bool isZero(std::string_view block) noexcept;

    /// Whether a block of a sparse file's map has another one behind it.
    static bool continuesSparse(std::string_view block) noexcept;
};

} // namespace tw
