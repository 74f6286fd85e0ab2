#pragma once

#include "TWCore/Archives/ArchiveTools.h"
#include "TWCore/Archives/ReadableArchive.h"
#include "TWCore/Shell/ShellDialect.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The calls of archive tools. Each name reaches its tool as a name: never as an option, a pattern or a list of names.
///
/// Nothing is the answer where the machine has no tool for a format.
namespace tw::ArchiveCommands {

using Names = std::span<std::string const>;

/// The tools of a host, which are on its search path.
ArchiveTools toolsOf(ArchiveCapability const &capability);

/// One argument: an option, and behind it a value in the same word.
struct Argument {
    enum class Value { none, name, path };

    std::string option = {};
    Value kind = Value::none;
    std::string value = {};

    friend bool operator==(Argument const &, Argument const &) = default;
};

/// A program with its arguments.
struct Call {
    std::string program = {};
    std::vector<Argument> arguments = {};
    std::string folder = {}; ///< to run it in; empty: anywhere

    friend bool operator==(Call const &, Call const &) = default;

    /// For a program of this machine.
    std::vector<std::string> words() const;

    /// For the resident shell of a host. What the user of the program has no say in is not quoted.
    std::string text(ShellDialect dialect) const;

    /// GNU tar reads a backslash in a name as the beginning of an escape, unless it is asked not to.
    bool hasBackslash() const;
};

/// Writes a new archive of names in a folder.
std::optional<Call> pack(ArchiveTools const &tools, ArchiveFormat format, std::string output, std::string folder,
                         Names names);

/// Unpacks everything into an existing folder.
std::optional<Call> unpack(ArchiveTools const &tools, ArchiveFamily family, std::string archive, std::string into);

/// How the names of members begin in an archive, before what the user sees of them.
inline constexpr std::string_view memberPrefixes[] = {"", "./", "/"};

/// Unpacks members, with everything below them, under their whole paths. A program that is no bsdtar finds them only
/// under the very names that the archive has, see `memberPrefixes`.
std::optional<Call> extract(ArchiveTools const &tools, ArchiveFamily family, std::string archive, std::string into,
                            Names members, std::string_view prefix = {});

/// Adds names in a folder to a zip or 7z archive, in place of members of these names.
std::optional<Call> add(ArchiveTools const &tools, ArchiveFormat format, std::string archive, std::string folder,
                        Names names);

/// Removes members of a zip or 7z archive, with everything below them.
std::optional<Call> remove(ArchiveTools const &tools, ArchiveFormat format, std::string archive, Names members);

/// Writes a tar archive of names in a folder to its output, compressed or not.
enum class Compression { none, gzip };
Call packToOutput(ArchiveTools const &tools, Compression compression, std::string folder, Names names);

/// Unpacks the tar archive at its input.
Call unpackInput(ArchiveTools const &tools, Compression compression, std::string into);

} // namespace tw::ArchiveCommands
