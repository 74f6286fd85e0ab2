// SnapshotCodec over any bytes: what decodes encodes to a blob that decodes to the same.

#include "TWCore/Check.h"
#include "TWCore/Model/SnapshotCodec.h"

#include <cstdint>
#include <string_view>

namespace tw {
namespace {

void checkSame(DirectorySnapshot const &a, DirectorySnapshot const &b)
{
    check(a.path() == b.path(), "the path is another one");
    check(a.truncated() == b.truncated(), "one of them is cut and the other is not");
    check(a.fetchedAt() == b.fetchedAt(), "the time is another one");
    check(a.count() == b.count(), "there are more or fewer entries");
    for (std::size_t index = 0; index < a.count(); ++index) {
        auto const &one = a.entries()[index];
        auto other = b.entries()[index];
        check(a.nameBytes(one) == b.nameBytes(other), "a name is another one");
        other.nameOffset = one.nameOffset; // names are packed anew
        check(one == other, "an entry is another one");
    }
}

/// Names may overlap in a blob, and be much longer when they are packed than the blob that they come from.
bool isPackable(DirectorySnapshot const &snapshot)
{
    constexpr std::uint64_t limit = 1U << 24U;
    std::uint64_t nameBytes = 0;
    for (auto const &entry : snapshot.entries())
        nameBytes += entry.nameLength;
    return nameBytes <= limit;
}

void checkBlob(std::string_view blob)
{
    auto const snapshot = SnapshotCodec::decode(blob, "/some where");
    if (!snapshot || !isPackable(*snapshot))
        return;
    auto const packed = SnapshotCodec::encode(*snapshot);
    auto const again = SnapshotCodec::decode(packed, "/some where");
    check(again.has_value(), "a blob of ours does not decode");
    checkSame(*snapshot, *again);
    check(SnapshotCodec::encode(*again) == packed, "a packed listing is packed otherwise");
}

} // namespace
} // namespace tw

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    tw::checkBlob({reinterpret_cast<char const *>(data), size});
    return 0;
}
