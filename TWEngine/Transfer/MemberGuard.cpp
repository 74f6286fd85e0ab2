#include "TWEngine/Transfer/MemberGuard.h"

#include "TWCore/Model/DisplayText.h"
#include "TWEngine/Transfer/TarError.h"

namespace tw {

namespace {

std::string_view separatorsOf(ShellDialect target)
{
    return target == ShellDialect::powershell ? "/\\" : "/";
}

/// Tar writes the folder of the names before them if a name was given so.
std::string_view withoutOwnFolder(std::string_view path)
{
    while (path.starts_with("./"))
        path.remove_prefix(2);
    return path;
}

} // namespace

MemberGuard::MemberGuard(std::vector<std::string> const &names, ShellDialect unpackedBy)
    : asked(names.begin(), names.end()), target(unpackedBy)
{
}

void MemberGuard::check(TarMember const &member)
{
    if (!isInside(member.name) || !isInOpenFolder(member))
        throw TarError("the host sent what was not asked for: " + onOneLine(member.name));
    if (member.kind == TarHeader::Kind::hardLink && !isInside(member.linkTarget))
        throw TarError("the host sent a link to what was not asked for: " + onOneLine(member.linkTarget));
}

bool MemberGuard::isInside(std::string_view path) const
{
    // A drive, or a stream beside a file.
    if (target == ShellDialect::powershell && path.contains(':'))
        return false;
    auto const separators = separatorsOf(target);
    path = withoutOwnFolder(path);
    auto const first = path.substr(0, path.find_first_of(separators));
    if (!asked.contains(std::string(first)))
        return false;
    while (!path.empty()) {
        auto const end = std::min(path.find_first_of(separators), path.size());
        auto const part = path.substr(0, end);
        // Tar writes no other path than the plain one.
        if (part.empty() || part == "." || part == "..")
            return false;
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return true;
}

bool MemberGuard::isInOpenFolder(TarMember const &member)
{
    auto const path = withoutOwnFolder(member.name);
    auto const slash = path.find_last_of(separatorsOf(target));
    bool const isAtTop = slash == std::string_view::npos;
    if (!folders.enter(isAtTop ? "" : path.substr(0, slash)))
        return false;
    auto const name = isAtTop ? path : path.substr(slash + 1);
    if (member.kind == TarHeader::Kind::folder)
        folders.add(name);
    else
        folders.remove(name);
    return true;
}

} // namespace tw
