#pragma once

#include "TWCore/Model/Text.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tw {

/// What a text in the path field asks for.
struct TypedPath {
    /// More than any path needs whose bytes are written as "%xx". What is longer is refused, also when variables make
    /// it so.
    static constexpr std::size_t maxBytes = 16 * 1024;

    /// What a text means depends on.
    struct Context {
        std::string folder = "/"; ///< on show
        std::string home = "/";   ///< of the user on the pane's connection
        std::string localHome = "/";
        bool isLocal = true; ///< the pane shows this machine
        /// The environment of this machine.
        std::function<std::optional<std::string>(std::string const &name)> variable = {};
    };

    /// A host, or "local", if the text names it; empty: the pane's own connection.
    std::string connection = {};

    /// Absolute, without a slash at its end. On a connection that was named also: "~", "~/x", for the home folder
    /// there, or empty, for where the host begins.
    std::string path = {};

    /// Why the text leads nowhere; empty if it leads somewhere.
    Text problem = {};

    friend bool operator==(TypedPath const &, TypedPath const &) = default;
};

/// Reads "/x", "x/../y", "~", "~/x", "$NAME/x", "${NAME}", "host:x", "sftp://user@host/x" and "file:///x".
///
/// "." and ".." are resolved by their names alone, as a shell does when it changes directory. The bytes of addresses
/// are percent-decoded. A variable that is not set is a part of a name: some names have a "$". On a host, only HOME is
/// known. Blanks and line ends around the text, as they come with a pasted one, do not count.
///
/// Nothing for a text without a path in it.
std::optional<TypedPath> typedPath(std::string_view text, TypedPath::Context const &context);

/// Whether a text needs the home folder of the pane's connection, which only a host knows.
bool beginsAtHome(std::string_view text);

/// `path`, which may begin with "~", from a home folder.
std::string fromHome(std::string_view path, std::string_view home);

} // namespace tw
