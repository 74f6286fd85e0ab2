#include "TWEngine/Transfer/TarReader.h"

#include "TWEngine/Transfer/TarError.h"

#include <algorithm>

namespace tw {

namespace {

using Kind = TarHeader::Kind;

constexpr auto blockBytes = static_cast<std::int64_t>(TarHeader::blockBytes);
constexpr auto ambiguous = "the archive says two things about one member";

std::int64_t withPadding(std::int64_t size)
{
    return (size + blockBytes - 1) / blockBytes * blockBytes;
}

/// A name that ends with a NUL or with the data.
std::string nameIn(std::string_view data)
{
    auto const end = std::min(data.find('\0'), data.size());
    if (data.find_first_not_of('\0', end) != std::string_view::npos || end == 0)
        throw TarError("the archive has a name that cannot be read");
    return std::string(data.substr(0, end));
}

template <class T>
void setOnce(std::optional<T> &place, T value)
{
    if (place)
        throw TarError(ambiguous);
    place = std::move(value);
}

} // namespace

void TarReader::take(std::string_view bytes)
{
    while (!bytes.empty()) {
        if (part == Part::data) {
            auto const passing = std::min(left, static_cast<std::int64_t>(bytes.size()));
            bytes.remove_prefix(static_cast<std::size_t>(passing));
            skip(passing);
            continue;
        }
        auto const wanted =
            part == Part::description ? static_cast<std::size_t>(withPadding(current.size)) : TarHeader::blockBytes;
        bytes = collect(bytes, wanted);
        if (block.size() == wanted)
            readBlock();
    }
}

void TarReader::skip(std::int64_t bytes)
{
    taken += bytes;
    left -= bytes;
    if (left == 0)
        endMember();
}

std::string_view TarReader::collect(std::string_view bytes, std::size_t wanted)
{
    auto const some = bytes.substr(0, wanted - block.size());
    taken += static_cast<std::int64_t>(some.size());
    block += some;
    return bytes.substr(some.size());
}

void TarReader::readBlock()
{
    switch (part) {
    case Part::header:
        if (TarHeader::isZero(block))
            ++zeroBlocks;
        else if (isAtEnd())
            throw TarError("the archive goes on behind its end");
        else
            begin(TarHeader::parse(block));
        break;
    case Part::sparseMap:
        if (!TarHeader::continuesSparse(block))
            expectData(current.size);
        break;
    case Part::description:
        endDescription();
        break;
    case Part::data:
        break;
    }
    block.clear();
}

void TarReader::begin(TarHeader header)
{
    // What describes a member stands directly before it.
    bool const isDescribed = longName || longLink || attributes;
    if (zeroBlocks > 0 && isDescribed)
        throw TarError(ambiguous);
    zeroBlocks = 0;
    current = std::move(header);
    if (!current.describesOthers())
        return beginMember();
    if (current.size < 1 || current.size > mostDescription)
        throw TarError("the archive has a description that is too long");
    part = Part::description;
}

void TarReader::beginMember()
{
    if (attributes &&
        ((longName && (attributes->name || attributes->sparseName)) || (longLink && attributes->linkTarget)))
        throw TarError(ambiguous);
    auto records = std::exchange(attributes, {}).value_or(PaxRecords());
    if (records.sparseName)
        records.name = std::move(records.sparseName);
    auto name = std::exchange(longName, {}).value_or(records.name.value_or(current.name));
    auto target = std::exchange(longLink, {}).value_or(records.linkTarget.value_or(current.linkTarget));
    current.size = records.size.value_or(current.size);
    // Older programs wrote a folder as a file whose name ends with a slash.
    if (name.ends_with('/') && current.kind == Kind::file)
        current.kind = Kind::folder;
    bool const hasData = current.kind == Kind::file || current.kind == Kind::sparseFile;
    // Some programs skip such data, and some read the next header there.
    if (!hasData && current.size != 0)
        throw TarError(ambiguous);
    while (name.size() > 1 && name.ends_with('/'))
        name.pop_back();
    onMember({current.kind, std::move(name), std::move(target)});
    if (current.hasMoreSparse)
        part = Part::sparseMap;
    else
        expectData(current.size);
}

void TarReader::expectData(std::int64_t size)
{
    left = withPadding(size);
    if (left == 0)
        endMember();
    else
        part = Part::data;
}

void TarReader::endDescription()
{
    auto const data = std::string_view(block).substr(0, static_cast<std::size_t>(current.size));
    switch (current.kind) {
    case Kind::longName:
        setOnce(longName, nameIn(data));
        break;
    case Kind::longLink:
        setOnce(longLink, nameIn(data));
        break;
    case Kind::attributes:
        setOnce(attributes, PaxRecords::parse(data));
        break;
    default: {
        auto const records = PaxRecords::parse(data);
        if (records.name || records.sparseName || records.linkTarget || records.size)
            throw TarError(ambiguous);
        break;
    }
    }
    part = Part::header;
}

void TarReader::endMember()
{
    part = Part::header;
    if (current.kind != Kind::folder)
        ++filesPassed;
}

} // namespace tw
