#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

/// The path of the socket through which several ssh clients share one connection to a host, and one login.
///
/// A process that can write to the socket can run commands on the host. So the socket lies in a folder that the user
/// owns and nobody else can enter. Without such a folder nothing is shared, and each client logs in by itself.
namespace tw::ControlPath {

/// The folder's owner and parent. The path of a socket is limited to 107 bytes (unix(7)), and ssh adds a suffix of its
/// own, so the folder is not below the user's home, whose path may be long.
struct Place {
    std::string base = "/tmp";
    uid_t user = 0;

    /// The place of the user of this process.
    static Place ofThisUser();
};

/// The name of a host's socket: eight hexadecimal digits.
std::string socketName(std::string_view host);

/// The folder of the sockets. Creates the folder if it is missing. Nothing if the folder is not safe.
std::optional<std::string> folder(Place const &place = Place::ofThisUser());

/// $XDG_RUNTIME_DIR; empty if it is not set.
std::string sessionFolder();

/// The folder for other sockets of ours: that of the session if it is safe and short, else the same folder.
std::optional<std::string> runtimeFolder(std::string const &session = sessionFolder(),
                                         Place const &place = Place::ofThisUser());

/// The path of the socket to `host`. Creates the folder if it is missing. Nothing if the folder is not safe.
std::optional<std::string> make(std::string_view host, Place const &place = Place::ofThisUser());

/// The path of a further connection to the same host, beside one that does not answer. `number` counts from 1.
std::string beside(std::string const &path, int number);

} // namespace tw::ControlPath
