#include "TWEngine/Archives/TarFilter.h"

#include "TWCore/Archives/ArchiveListing.h"
#include "TWCore/Model/DisplayText.h"
#include "TWEngine/Transfer/TarError.h"

namespace tw {

namespace {

std::set<std::string> normalised(std::vector<std::string> const &paths)
{
    std::set<std::string> all;
    for (auto const &path : paths)
        all.insert(ArchiveListing::normalise(path));
    return all;
}

} // namespace

TarFilter::TarFilter(std::vector<std::string> const &paths, Covers how)
    : without(normalised(paths)), covers(how), reader([this](TarMember const &member) { begin(member); })
{
}

std::string TarFilter::pass(std::string_view bytes)
{
    std::string passed;
    passed.reserve(bytes.size());
    while (!bytes.empty()) {
        auto const data = static_cast<std::size_t>(reader.dataLeft());
        auto const some = bytes.substr(0, data > 0 ? data : TarHeader::blockBytes - block.size());
        bytes.remove_prefix(some.size());
        if (data > 0) {
            reader.skip(static_cast<std::int64_t>(some.size()));
            if (!isOut)
                passed += some;
            continue;
        }
        block += some;
        if (block.size() == TarHeader::blockBytes)
            passBlock(passed);
    }
    return passed;
}

/// A member is known with its header, behind the blocks that describe it.
void TarFilter::passBlock(std::string &passed)
{
    bool const isHeader = reader.expectsHeader();
    bool const isMap = reader.isInSparseMap();
    hasBegun = false;
    reader.take(block);
    if (hasBegun || isMap) {
        if (!isOut)
            passed += undecided + block;
        undecided.clear();
    } else if (!isHeader || !TarHeader::isZero(block)) {
        undecided += block;
        // What is said about all members behind it stays, whatever becomes of the next one.
        if (isHeader)
            isForAll = TarHeader::parse(block).kind == TarHeader::Kind::commonAttributes;
        if (isForAll && reader.expectsHeader())
            passed += std::exchange(undecided, {});
    }
    block.clear();
}

void TarFilter::begin(TarMember const &member)
{
    hasBegun = true;
    auto path = ArchiveListing::normalise(member.name);
    isOut = isLeftOut(path);
    if (isOut)
        return;
    if (member.kind == TarHeader::Kind::hardLink && isLeftOut(ArchiveListing::normalise(member.linkTarget)))
        throw TarError(onOneLine(path) + " shares its content with " + onOneLine(member.linkTarget) +
                       ", and would be lost with it");
    ++keptMembers;
    seen.insert(std::move(path));
}

bool TarFilter::isLeftOut(std::string_view path) const
{
    for (;;) {
        if (without.contains(std::string(path)))
            return true;
        auto const end = path.rfind('/');
        if (covers == Covers::themAlone || end == std::string_view::npos)
            return false;
        path = path.substr(0, end);
    }
}

} // namespace tw
