#pragma once

#include "TWCore/Shell/ShellDialect.h"

#include <optional>
#include <string>
#include <string_view>

/// The requests by which a file of a host is edited elsewhere and put back, for its resident shell. Paths are absolute,
/// in the client's own form. No answer has a name in it that could be taken for another part of it.
///
/// The new content is put beside the file, in a folder that only the user can enter, and takes the file's name in one
/// step: a reader finds the old bytes or the new ones. The file keeps its mode and its group; a link stays, and its
/// target is replaced. Where a new file would lose something of the old one (other hard links, another owner, an access
/// list) or the folder takes no new file, the content is copied into the file, once all of it is on the host.
namespace tw::EditCommand {

/// How a new content gets into the file.
enum class Way {
    rename, ///< in one step
    copy,   ///< byte by byte: if the host stops meanwhile, the file is incomplete
};

/// A file as its host sees it.
struct State {
    std::string version; ///< differs if the file was changed or replaced; empty: there is no such file
    std::string mode;    ///< permission bits in octal digits; empty if the host does not say
    Way way = Way::rename;

    friend bool operator==(State const &, State const &) = default;
};

/// Asks for the state of the file at `path`.
std::string question(ShellDialect dialect, std::string_view path);

/// Nothing if it is no answer to that.
std::optional<State> state(std::string_view output);

/// What is to be put where.
struct Replacement {
    std::string path;
    std::string token;    ///< names the folder of the new content: letters and digits that nobody can guess
    std::string expected; ///< the version that may be replaced; another one stays as it is
    std::string mode;     ///< for a file that is not there; empty: only its user may read it
};

/// As much content goes along in a request: its shell reads requests byte by byte.
inline constexpr std::size_t mostContentInRequest = 65536;

/// Puts `content` in the place of the file. For POSIX hosts, like all that follows.
std::string replace(Replacement const &wanted, std::string_view content);

/// Makes the folder for a content that comes in another way.
std::string stage(Replacement const &wanted);

/// The path that this content is to be written to; nothing if there is no folder.
std::optional<std::string> stagedFile(std::string_view output);

/// Puts that content in the place of the file.
std::string replaceWithStaged(Replacement const &wanted, std::string_view stagedFile);

/// Removes it.
std::string dropStaged(std::string_view stagedFile);

struct Outcome {
    enum class Kind {
        replaced,
        same,    ///< another version was there, which has the very content
        changed, ///< another version is there, and was left alone
        failed,
    };

    Kind kind = Kind::failed;
    State state = {};       ///< of the file afterwards
    std::string words = {}; ///< why it has failed; may be empty
};

/// What such a request has printed.
Outcome outcome(std::string_view output);

} // namespace tw::EditCommand
