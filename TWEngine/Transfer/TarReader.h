#pragma once

#include "TWEngine/Transfer/PaxRecords.h"
#include "TWEngine/Transfer/TarHeader.h"

#include <functional>

namespace tw {

/// A file, a folder or a link in a tar archive.
struct TarMember {
    TarHeader::Kind kind = TarHeader::Kind::file;
    std::string name = {};       ///< bytes, without the slash at the end of a folder's name
    std::string linkTarget = {}; ///< of links
};

/// Reads the headers of a tar archive while it passes in pieces, and skips the data.
///
/// It reads strictly: an archive that two programs could take for two things is refused, so that what unpacks it cannot
/// find a member that was not seen here.
///
/// Memory: bounded by `mostDescription`, whatever is in the archive.
/// Errors: TarError; nothing may be read after it.
class TarReader {
public:
    /// Names and attributes of one member. Extended attributes can have 64 KiB each.
    static constexpr std::int64_t mostDescription = std::int64_t{1} << 20U;

    /// Called with each member before its data. What it throws leaves `take`.
    using OnMember = std::function<void(TarMember const &member)>;

    explicit TarReader(OnMember onMember) : onMember(std::move(onMember)) {}

    void take(std::string_view bytes);

    /// Bytes of a member's data, with their padding, that are still to come before the next header.
    std::int64_t dataLeft() const noexcept { return part == Part::data ? left : 0; }

    /// Whether the next block is a header, or a zero in its place.
    bool expectsHeader() const noexcept { return part == Part::header; }

    /// Whether the next block goes on with the header of a sparse file, which has begun.
    bool isInSparseMap() const noexcept { return part == Part::sparseMap; }

    /// So many of `dataLeft` have passed, and need not be read.
    void skip(std::int64_t bytes);

    /// True behind the two blocks of zeros that end an archive.
    bool isAtEnd() const noexcept { return zeroBlocks >= 2; }

    /// Bytes so far.
    std::int64_t position() const noexcept { return taken; }

    /// Members that have passed whole and are no folders.
    std::int64_t files() const noexcept { return filesPassed; }

private:
    enum class Part { header, sparseMap, description, data };

    std::string_view collect(std::string_view bytes, std::size_t wanted);
    void readBlock();
    void begin(TarHeader header);
    void beginMember();
    void endDescription();
    void endMember();
    void expectData(std::int64_t size);

    // Constant after construction.
    OnMember const onMember;

    Part part = Part::header;
    std::string block;     ///< the header or the description that is being collected
    std::int64_t left = 0; ///< bytes of the data and its padding that are still to pass
    std::int64_t taken = 0;
    std::int64_t filesPassed = 0;
    int zeroBlocks = 0; ///< in a row

    TarHeader current; ///< whose description or data passes
    // For the next member.
    std::optional<std::string> longName;
    std::optional<std::string> longLink;
    std::optional<PaxRecords> attributes;
};

} // namespace tw
