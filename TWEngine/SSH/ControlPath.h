#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

/// Where the sockets lie through which several ssh clients share one connection to a host, and one login.
///
/// Whoever may write to such a socket may run commands on the host, so it lies in a folder that belongs to the user and
/// that nobody else can enter. Where there is no such folder, nothing is shared, and each client logs in by itself.
namespace tw::ControlPath {

/// Whose folder it is, and where. The path of a socket must fit in 107 bytes, of which ssh uses some for itself: this
/// is why it is not below the user's home, which may be deep.
struct Place {
    std::string base = "/tmp";
    uid_t user = 0;

    /// The place of the user of this process.
    static Place ofThisUser();
};

/// The name of a host's socket: eight hexadecimal digits.
std::string socketName(std::string_view host);

/// The path of the socket to `host`, in a folder that is made if need be and was found to be safe; else nothing.
std::optional<std::string> make(std::string_view host, Place const &place = Place::ofThisUser());

} // namespace tw::ControlPath
