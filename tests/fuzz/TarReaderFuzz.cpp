// TarReader over any bytes: what is read does not depend on how the bytes are cut, and memory stays bounded.
//
// With a right checksum in the place of each header's, or hardly a block would be read.

#include "TWCore/Check.h"
#include "TWEngine/Transfer/MemberGuard.h"
#include "TWEngine/Transfer/TarError.h"
#include "TWEngine/Transfer/TarReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <set>

namespace tw {
namespace {

struct Read {
    std::vector<std::string> names;
    std::string error;
    std::int64_t files = 0;

    friend bool operator==(Read const &, Read const &) = default;
};

Read readInPieces(std::string_view archive, std::size_t piece)
{
    MemberGuard guard({"a"}, ShellDialect::posix);
    Read read;
    std::set<std::string> folders{""};
    TarReader reader([&](TarMember const &member) {
        guard.check(member);
        check(!member.name.starts_with('/') && !("/" + member.name + "/").contains("/../"), "a way out was taken");
        auto name = member.name;
        while (name.starts_with("./"))
            name.erase(0, 2);
        auto const folder = name.substr(0, name.find_last_of('/') == std::string::npos ? 0 : name.find_last_of('/'));
        check(folders.contains(folder), "a member was taken without its folder");
        if (member.kind == TarHeader::Kind::folder)
            folders.insert(name);
        else
            folders.erase(name);
        read.names.push_back(member.name);
    });
    try {
        for (std::size_t at = 0; at < archive.size(); at += piece)
            reader.take(archive.substr(at, piece));
    } catch (TarError const &error) {
        read.error = error.what();
    }
    read.files = reader.files();
    return read;
}

std::string withChecksums(std::string archive)
{
    for (std::size_t at = 0; at + TarHeader::blockBytes <= archive.size(); at += TarHeader::blockBytes) {
        auto const block = std::string_view(archive).substr(at, TarHeader::blockBytes);
        if (TarHeader::isZero(block))
            continue;
        std::fill_n(archive.begin() + static_cast<std::ptrdiff_t>(at) + 148, 8, ' ');
        unsigned sum = 0;
        for (auto const byte : block)
            sum += static_cast<unsigned char>(byte);
        std::array<char, 8> digits{};
        std::snprintf(digits.data(), digits.size(), "%06o", sum);
        std::ranges::copy(digits, archive.begin() + static_cast<std::ptrdiff_t>(at) + 148);
    }
    return archive;
}

void checkRead(std::string_view archive)
{
    auto const whole = readInPieces(archive, std::max<std::size_t>(archive.size(), 1));
    check(readInPieces(archive, 100) == whole, "another cut reads something else");
}

} // namespace
} // namespace tw

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::string const archive(reinterpret_cast<char const *>(data), size);
    tw::checkRead(archive);
    tw::checkRead(tw::withChecksums(archive));
    return 0;
}
