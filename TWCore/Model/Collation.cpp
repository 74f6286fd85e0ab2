#include "TWCore/Model/Collation.h"

#include "TWCore/Check.h"
#include "TWCore/Model/DisplayText.h"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>

#include <cstring>

namespace tw {

namespace {

bool isAscii(std::string_view bytes)
{
    // In blocks whose length the compiler knows, so that it turns each into a few wide instructions.
    constexpr std::size_t blockBytes = 256;
    char const *position = bytes.data();
    char const *const end = position + bytes.size();
    for (; end - position >= static_cast<std::ptrdiff_t>(blockBytes); position += blockBytes) {
        std::uint8_t all = 0;
        for (std::size_t i = 0; i < blockBytes; ++i)
            all |= static_cast<std::uint8_t>(position[i]);
        if (all >= 0x80)
            return false;
    }
    return std::all_of(position, end, [](char byte) { return static_cast<std::uint8_t>(byte) < 0x80; });
}

icu::Normalizer2 const &nfc()
{
    auto status = U_ZERO_ERROR;
    auto const *const instance = icu::Normalizer2::getNFCInstance(status);
    check(U_SUCCESS(status) != 0, "ICU came without its composition data");
    return *instance;
}

/// The composed form of a name; empty if the name is in that form as it is.
std::string compositionKey(std::string_view name, icu::Normalizer2 const &normalizer)
{
    if (isAscii(name))
        return {};
    auto const decoded = repaired(name);
    auto status = U_ZERO_ERROR;
    if (normalizer.isNormalizedUTF8(decoded, status) != 0)
        return {};
    std::string composed;
    icu::StringByteSink<std::string> sink(&composed, static_cast<std::int32_t>(decoded.size()));
    normalizer.normalizeUTF8(0, decoded, sink, nullptr, status);
    if (U_FAILURE(status) != 0)
        throw std::bad_alloc(); // the one way in which well-formed text can fail
    composed.shrink_to_fit();
    return composed;
}

} // namespace

Collation const &Collation::trivial()
{
    static Collation const none;
    return none;
}

Collation::Collation(DirectorySnapshot const &snapshot)
{
    if (!snapshot.storage() || isAscii(*snapshot.storage()))
        return;
    auto const &normalizer = nfc();
    keys.reserve(snapshot.count());
    for (auto const &entry : snapshot.entries())
        keys.push_back(compositionKey(snapshot.nameBytes(entry), normalizer));
}

std::optional<std::string_view> Collation::key(std::size_t index) const
{
    if (keys.empty())
        return std::nullopt;
    check(index < keys.size(), "an index lies outside the listing of its collation");
    if (keys[index].empty())
        return std::nullopt;
    return keys[index];
}

} // namespace tw
