#include "TWEngine/SSH/StoredHostKey.h"

#include "TWCore/Shell/Base64.h"
#include "TWEngine/Runtime/FileDescriptor.h"
#include "TWEngine/Runtime/WholeFile.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

#include <fcntl.h>
#include <sys/stat.h>

namespace tw::StoredHostKey {

namespace {

std::string sha256(std::string_view bytes)
{
    std::array<std::uint8_t, 32> digest{};
    gsize size = digest.size();
    auto *const sum = g_checksum_new(G_CHECKSUM_SHA256);
    g_checksum_update(sum, reinterpret_cast<guchar const *>(bytes.data()), static_cast<gssize>(bytes.size()));
    g_checksum_get_digest(sum, digest.data(), &size);
    g_checksum_free(sum);
    return {reinterpret_cast<char const *>(digest.data()), size};
}

std::string contentOf(std::string const &path)
{
    // A pipe or a device would block: the path comes from what was said on the way to a host.
    FileDescriptor const file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    std::string content;
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        WholeFile::readUpTo(file.get(), maxFileBytes, content) != 0)
        return {};
    return content;
}

/// Counted from 1, as ssh does.
std::string_view lineOf(std::string_view text, std::size_t number)
{
    for (; number > 1 && !text.empty(); --number)
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    return text.substr(0, text.find('\n'));
}

} // namespace

std::string fingerprintIn(std::string_view line)
{
    constexpr std::string_view beginning = " AAAA"; // a key begins with the length of its type
    auto const start = line.find(beginning);
    if (start == std::string_view::npos || line.starts_with('#'))
        return {};
    auto const encoded = line.substr(start + 1);
    auto const key = Base64::decode(encoded.substr(0, encoded.find_first_of(" \t\r")));
    if (!key)
        return {};
    auto digest = Base64::encode(sha256(*key));
    while (digest.ends_with('='))
        digest.pop_back();
    return "SHA256:" + digest;
}

std::string fingerprintAt(std::string_view place)
{
    auto const colon = place.rfind(':');
    if (colon == std::string_view::npos)
        return {};
    auto const digits = place.substr(colon + 1);
    std::size_t number = 0;
    auto const parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (parsed.ec != std::errc() || parsed.ptr != digits.data() + digits.size() || number == 0)
        return {};
    return fingerprintIn(lineOf(contentOf(std::string(place.substr(0, colon))), number));
}

} // namespace tw::StoredHostKey
