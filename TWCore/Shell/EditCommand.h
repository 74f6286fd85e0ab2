#pragma once

#include "TWCore/Shell/ShellDialect.h"

#include <optional>
#include <string>
#include <string_view>

/// The requests by which a file of a host is edited elsewhere and put back, for the host's resident shell. Paths are
/// absolute, in the client's own form. No answer contains a name that could be mistaken for another part of the answer.
///
/// The new content is put beside the file, in a folder that only the user can enter, and takes the file's name in one
/// step: a reader finds the old bytes or the new ones. The file keeps its mode, its group and its extended attributes;
/// a link stays, and its target is replaced. Where a new file would lose something of the old one (other hard links,
/// another owner, an access list, attributes that cannot be set) or the folder takes no new file, the content is copied
/// into the file, once all of it is on the host and there is room for it.
namespace tw::EditCommand {

/// How a new content gets into the file.
enum class Way {
    rename, ///< in one step
    copy,   ///< byte by byte: if the host stops during the copy, the file is incomplete
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

/// Nothing if `output` is no answer to that question.
std::optional<State> state(std::string_view output);

/// A file that is to be replaced.
struct Replacement {
    std::string path;
    std::string token;    ///< names the place of the new content: letters and digits that nobody can guess
    std::string expected; ///< the version that may be replaced; any other version is left alone
    std::string mode;     ///< for a file that does not exist; empty: only its user may read it
};

/// Up to this size the content is part of the request: the shell reads its requests byte by byte.
inline constexpr std::size_t mostContentInRequest = 65536;

/// Puts `content` in the place of the file. For POSIX hosts.
std::string replace(Replacement const &wanted, std::string_view content);

/// Makes the folder for a content that is uploaded separately. For POSIX hosts.
std::string stage(Replacement const &wanted);

/// The path in that folder to upload to. Nothing if the folder could not be made.
std::optional<std::string> stagedFile(std::string_view output);

/// The path to upload to on a Windows host: beside the file, where it inherits who may read it.
std::string stagedOnWindows(Replacement const &wanted);

/// Compares the version and puts the uploaded content in the place of the file, in one request.
std::string replaceWithStaged(ShellDialect dialect, Replacement const &wanted, std::string_view stagedFile);

/// Removes the uploaded content.
std::string dropStaged(ShellDialect dialect, std::string_view stagedFile);

struct Outcome {
    enum class Kind {
        replaced,
        same,    ///< there was another version, with exactly this content
        changed, ///< there is another version, which was left alone
        failed,
    };

    Kind kind = Kind::failed;
    State state = {};       ///< of the file afterwards
    std::string words = {}; ///< the reason of a failure; may be empty
};

/// The outcome that the output of a replacement states.
Outcome outcome(std::string_view output);

} // namespace tw::EditCommand
