#include "TWEngine/Applications/FileNature.h"

#include <algorithm>
#include <array>

namespace tw {

namespace {

constexpr std::uint16_t executeBits = 0111;

/// Programs whatever their mode: what opens them is a loader or a runtime, which executes them. A file system of
/// another system gives the right to execute to all of its files, so the right alone says nothing.
constexpr std::array<std::string_view, 15> programTypes{
    "application/java-archive",
    "application/x-java-jnlp-file",
    "application/x-msdos-program",
    "application/x-msi",
    "application/x-bat",
    "application/x-ms-shortcut",
    "application/x-executable",
    "application/x-pie-executable",
    "application/x-sharedlib",
    "application/vnd.microsoft.portable-executable",
    "application/x-ms-dos-executable",
    "application/x-msdownload",
    "application/x-java-archive",
    "application/vnd.appimage",
    "application/x-iso9660-appimage",
};

constexpr std::string_view launcherSuffix = ".desktop";

FileNature::Kind kindOf(FileNature::Facts const &facts)
{
    using Kind = FileNature::Kind;
    if (facts.name.ends_with(launcherSuffix) || facts.contentType == "application/x-desktop")
        return Kind::launcher;
    auto const isProgramType = std::ranges::find(programTypes, facts.contentType) != programTypes.end();
    if (isProgramType || facts.beginning.starts_with("\x7f"
                                                     "ELF"))
        return Kind::program;
    if ((facts.mode & executeBits) != 0 && facts.beginning.starts_with("#!"))
        return Kind::script;
    return Kind::document;
}

} // namespace

FileNature FileNature::of(Facts const &facts)
{
    return {.kind = kindOf(facts),
            .contentType = facts.contentType,
            .mayBeExecuted = (facts.mode & executeBits) != 0,
            .isMarkedAsFetched = facts.isMarkedAsFetched};
}

} // namespace tw
