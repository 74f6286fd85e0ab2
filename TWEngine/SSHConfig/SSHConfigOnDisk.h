#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// The user's ssh configuration as a file that other programs, and the user's editor, write as well.
///
/// Threads: none of its own. All of it blocks: for a worker thread.
/// Errors: SSHConfigError.
namespace tw::SSHConfigOnDisk {

/// The largest file that is read. One of ten thousand hosts is a quarter of it.
inline constexpr std::size_t maxBytes = 1U << 20U;

/// The configuration of this user: `.ssh/config` in the home directory that the password database knows, whatever HOME
/// says.
std::string pathOfThisUser();

/// The text of the file; nothing if there is none. Anything but a file of at most maxBytes is NotReadable, and a named
/// pipe is not waited for.
std::optional<std::string> read(std::string const &path);

/// Puts `text` in place of `before`, which is what `read` gave: in one step, so that an ssh that is starting reads the
/// old or the new, and so that neither a crash nor a full disk leaves a part of it.
///
/// The file is then the user's alone (0600). Its folder is made if need be (0700). A link stays, and what it leads to
/// is replaced. What was there at the first time is kept beside it, as `path` + ".tw-backup".
///
/// Throws NotWritable, NotReadable, and ChangedMeanwhile if the file is not `before` any more. What another program
/// writes between that look and the end of this call is lost; no lock is known that editors would heed.
void write(std::string const &path, std::optional<std::string> const &before, std::string const &text);

} // namespace tw::SSHConfigOnDisk
