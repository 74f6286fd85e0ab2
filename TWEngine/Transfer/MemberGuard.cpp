#include "TWEngine/Transfer/MemberGuard.h"

#include "TWCore/Model/DisplayText.h"
#include "TWEngine/Transfer/TarError.h"

namespace tw {

MemberGuard::MemberGuard(std::vector<std::string> const &names, ShellDialect unpackedBy)
    : asked(names.begin(), names.end()), target(unpackedBy)
{
}

void MemberGuard::check(TarMember const &member) const
{
    if (!isInside(member.name))
        throw TarError("the host sent what was not asked for: " + onOneLine(member.name));
    if (member.kind == TarHeader::Kind::hardLink && !isInside(member.linkTarget))
        throw TarError("the host sent a link to what was not asked for: " + onOneLine(member.linkTarget));
}

bool MemberGuard::isInside(std::string_view path) const
{
    std::string_view const separators = target == ShellDialect::powershell ? "/\\" : "/";
    // A drive, or a stream beside a file.
    if (target == ShellDialect::powershell && path.contains(':'))
        return false;
    while (path.starts_with("./"))
        path.remove_prefix(2);
    auto const first = path.substr(0, path.find_first_of(separators));
    if (!asked.contains(std::string(first)))
        return false;
    while (!path.empty()) {
        auto const end = std::min(path.find_first_of(separators), path.size());
        if (path.substr(0, end) == "..")
            return false;
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return true;
}

} // namespace tw
