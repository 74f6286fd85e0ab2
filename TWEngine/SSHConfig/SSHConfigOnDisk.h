#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// The user's ssh configuration as a file that other programs, and the user's editor, write too.
///
/// Threads: may be called from anywhere. Every function blocks, so it belongs on a worker.
/// Errors: SSHConfigError.
namespace tw::SSHConfigOnDisk {

/// The largest file that is read. Ten thousand hosts take a quarter of it.
inline constexpr std::size_t maxBytes = 1U << 20U;

/// The configuration of this user: `.ssh/config` in the home directory of the password database, as ssh finds it. HOME
/// is ignored.
std::string pathOfThisUser();

/// The text of the file, or nothing if there is no file. Throws NotReadable for anything but a file of at most
/// maxBytes. Does not wait for a named pipe.
std::optional<std::string> read(std::string const &path);

/// Replaces `before`, the result of `read`, by `text`. The replacement is one step, so that an ssh that starts
/// meanwhile reads the old or the new text, and a crash or a full disk leaves the old text.
///
/// The file gets the mode 0600. A missing folder is made with the mode 0700. A link stays a link, and its target is
/// replaced. The first call keeps the old file as `path` + ".tw-backup".
///
/// Throws NotWritable, NotReadable, and ChangedMeanwhile if the file is not `before` any more. If another program
/// writes between that check and the end of this call, its text is lost: editors heed no lock.
void write(std::string const &path, std::optional<std::string> const &before, std::string const &text);

} // namespace tw::SSHConfigOnDisk
